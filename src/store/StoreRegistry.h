// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "store/RecursiveMutex.h"
#include "tessel/KalConfig.h"
#include "tessel/locking.h"

namespace kalStore::internal {

struct StoreEntry {
  std::shared_ptr<KalConfig> store;  ///< The registry's ownership; users hold raw pointers.
  int counts;                        ///< References handed out, and the registry's own until clean-up.
};

/// By call id.
using Stores = std::map<std::uint32_t, StoreEntry>;

/// Serialises the registry's operations, and what is traced and ended in them. Outermost: the lock of a
/// group, or of what follows live values, may be taken inside it. Usable before any constructor runs.
[[gnu::visibility("hidden")]] extern constinit detail::Mutex<RecursiveMutex> g_storesMutex;

/// The stores of the process.
Stores& TheStores() TESSEL_LOCKING(requires_capability(g_storesMutex));

}  // namespace kalStore::internal
