// SPDX-License-Identifier: Apache-2.0
#pragma once

// Which lock protects what, for Clang to check (-Wthread-safety). Other compilers see nothing of it.

#include <mutex>

// An attribute of Clang's thread-safety analysis: TESSEL_LOCKING(guarded_by(m_mutex)) after a member's name,
// TESSEL_LOCKING(requires_capability(m_mutex)) after a function's parameters.
#if defined(__clang__)
#define TESSEL_LOCKING(...) __attribute__((__VA_ARGS__))
#else
#define TESSEL_LOCKING(...)
#endif

namespace kalStore::detail {

/// A mutex that the analysis knows; otherwise the same, in its size too.
template <class Base>
class TESSEL_LOCKING(capability("mutex")) Mutex : public Base {
 public:
  using Base::Base;
};

/// A std::lock_guard that the analysis knows.
template <class Base>
class TESSEL_LOCKING(scoped_lockable) Lock {
 public:
  explicit Lock(Mutex<Base>& mutex) TESSEL_LOCKING(acquire_capability(mutex)) : m_lock(mutex) {}
  ~Lock() TESSEL_LOCKING(release_capability()) = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  const std::lock_guard<Base> m_lock;
};

}  // namespace kalStore::detail
