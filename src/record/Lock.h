// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "tessel/locking.h"

namespace kalStore::internal {

/// Holds a mutex until the end of the scope. Clang's thread-safety analysis knows it.
class TESSEL_LOCKING(scoped_lockable) Lock {
 public:
  explicit Lock(detail::Mutex<std::mutex>& mutex) TESSEL_LOCKING(acquire_capability(mutex)) : m_lock(mutex) {}
  ~Lock() TESSEL_LOCKING(release_capability()) = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  /// Waits for a notification, or without one, until a time; the mutex is free meanwhile. False when that has
  /// come.
  bool WaitUntil(std::condition_variable& notified, std::chrono::steady_clock::time_point end) {
    return notified.wait_until(m_lock, end) == std::cv_status::no_timeout;
  }

 private:
  std::unique_lock<std::mutex> m_lock;
};

}  // namespace kalStore::internal
