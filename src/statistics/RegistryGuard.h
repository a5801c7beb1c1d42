// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/locking.h"
#include "util/CCmMutexThread.h"

namespace kalStore::internal {

/// Holds the lock of a registry of statistics objects, if it can be had; a call goes on without it otherwise.
class TESSEL_LOCKING(scoped_lockable) RegistryGuard {
 public:
  using Mutex = detail::Mutex<CCmMutexThreadRecursive>;

  explicit RegistryGuard(Mutex& mutex) TESSEL_LOCKING(acquire_capability(mutex))
      : m_mutex(mutex), m_isLocked(mutex.Lock() == 0) {}
  ~RegistryGuard() TESSEL_LOCKING(release_capability()) {
    if (m_isLocked) m_mutex.UnLock();
  }
  RegistryGuard(const RegistryGuard&) = delete;
  RegistryGuard& operator=(const RegistryGuard&) = delete;

 private:
  Mutex& m_mutex;
  const bool m_isLocked;
};

}  // namespace kalStore::internal
