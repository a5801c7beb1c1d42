// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "tessel/CKalTessel.h"

namespace kalStore::internal {

/// Makes the process's registry on first use, so that static objects of any order may use it. At exit, and
/// when the library is unloaded, the registry is emptied but not destroyed: threads and static objects that
/// end later still find it.
class ProcessRegistry {
 public:
  static CKalTessel& Get() {
    // Pairs with the release in the constructor: whoever finds the registry finds it made.
    CKalTessel* const made = s_registry.load(std::memory_order_acquire);
    return made != nullptr ? *made : make();
  }
  /// Whether it is the process's.
  static bool Is(const CKalTessel* registry) {
    return registry == s_registry.load(std::memory_order_relaxed);
  }

  // The entry points' operations, for their callers.
  static void* CreateOrGet(KalTesselEntityType type, std::uint32_t callId, const void* caller);
  static int Release(KalTesselEntityType type, std::uint32_t callId, void* entity, const void* caller);

  /// Calls `look` with the key, the reference count and the pointer of each object, by key, under the lock of
  /// the registry. It must add no reference and call no virtual function: the last reference may be released
  /// meanwhile, and the object's end waits only in its destructor.
  using Look = std::function<void(KalTesselEntityType, std::uint32_t, std::uint32_t, void*)>;
  static void ForEachEntity(const Look& look);

 private:
  ProcessRegistry();
  ~ProcessRegistry();

  static CKalTessel& make();  // Out of line: the rare case.

  static std::atomic<CKalTessel*> s_registry;  // Null until it is made.
};

}  // namespace kalStore::internal
