// SPDX-License-Identifier: Apache-2.0
#pragma once

// The standard library's mutex and lock, so that Clang checks which lock protects what (-Wthread-safety).

#include <condition_variable>
#include <mutex>

// An attribute of Clang's thread-safety analysis: UTIL_LOCKING(guarded_by(m_mutex)) after a member's name,
// UTIL_LOCKING(requires_capability(m_mutex)) after a function's parameters.
#if defined(__clang__)
#define UTIL_LOCKING(...) __attribute__((__VA_ARGS__))
#else
#define UTIL_LOCKING(...)
#endif

namespace cm::internal {

class UTIL_LOCKING(capability("mutex")) Mutex : public std::mutex {};

/// Holds a mutex until the end of the scope.
class UTIL_LOCKING(scoped_lockable) Lock {
 public:
  explicit Lock(Mutex& mutex) UTIL_LOCKING(acquire_capability(mutex)) : m_lock(mutex) {}
  ~Lock() UTIL_LOCKING(release_capability()) = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  /// Waits for a notification, or without one; the mutex is free meanwhile.
  void Wait(std::condition_variable& notified) { notified.wait(m_lock); }

 private:
  std::unique_lock<std::mutex> m_lock;
};

}  // namespace cm::internal
