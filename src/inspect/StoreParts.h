// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>

#include "inspect/LockedCopy.h"
#include "store/StoreRegistry.h"

namespace kalStore::internal {

/// What is copied of a store.
struct StoreParts {
  using Values = atomMap<std::string, ConfigData>;
  using Observers = KalConfigObserverMgr<ConfigEventHandler::Ptr>;

  static bool IsCleanedUp(const KalConfig& store) TESSEL_LOCKING(requires_capability(g_storesMutex)) {
    return store.m_bCleanedUp;
  }
  static Values& ValuesOf(KalConfig& store, KalConfigGroup group) { return store.configsOf(group); }
  static Observers& ObserversOf(KalConfig& store, KalConfigGroup group) { return store.observersOf(group); }
};

/// Calls `look` with the store of the call, if there is one. The store may end meanwhile, but is not freed.
/// No reference is taken, of which others would see the count, and whose release could end the store here.
void LookAtStore(std::uint32_t callId, const std::function<void(KalConfig&)>& look);

/// Copies something of each group of a call, one group after the other: `put` is called with a LockedCopy,
/// the store and the group, and `take` as by LockedCopy::ForEach().
template <class Head, class Put, class Take>
void CopyGroups(std::uint32_t callId, Put put, Take take) {
  LockedCopy<Head> copy;
  for (int index = 0; index < KAL_CONFIG_GROUP_LAST; ++index) {
    const std::function<void(KalConfig&)> look = [&](KalConfig& store) {
      put(copy, store, static_cast<KalConfigGroup>(index));
    };
    copy.Make([&] { LookAtStore(callId, look); });
    copy.ForEach(take);
  }
}

}  // namespace kalStore::internal
