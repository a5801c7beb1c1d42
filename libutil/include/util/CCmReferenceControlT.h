// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "util/CCmMutexThread.h"
#include "util/export.h"

/// An intrusive reference counter; `LockType` names the threads that share the object. The counter starts at
/// 0: the first owner adds the first reference.
template <class LockType>
class CCmReferenceControlT;

/// Shared between threads: the counter is atomic.
///
/// @threads Any thread may add and release references that it holds.
/// @par Example
/// @code{.cpp}
/// struct Shared : CCmReferenceControlT<CCmMutexThread> {
///   explicit Shared(bool& gone) : m_gone(gone) {}
///   ~Shared() override { m_gone = true; }
///   bool& m_gone;
/// };
/// bool gone = false;
/// auto* const shared = new Shared(gone);
/// assert(shared->AddReference() == 1);
/// assert(shared->ReleaseReference() == 0 && gone);
/// @endcode
template <>
class UTIL_API CCmReferenceControlT<CCmMutexThread> {
 public:
  CCmReferenceControlT() = default;
  CCmReferenceControlT(const CCmReferenceControlT&) = delete;
  CCmReferenceControlT& operator=(const CCmReferenceControlT&) = delete;
  virtual ~CCmReferenceControlT();

  /// Called once, when the last reference is released, on the thread that released it. Deletes the object.
  virtual void OnReferenceDestory();

  /// Adds a reference.
  /// @pre The caller holds a reference, or the object has no other user yet.
  /// @return The new count (low 32 bits).
  std::uint32_t AddReference() {
    // Relaxed: whoever adds a reference holds one already, or received the object in a synchronised way.
    return static_cast<std::uint32_t>(m_references.fetch_add(1, std::memory_order_relaxed) + 1);
  }
  /// Adds a reference, unless the last one has been released.
  /// @pre The object is not deleted meanwhile: OnReferenceDestory() waits for the caller, by a lock for
  /// example.
  /// @return Whether it was added; false when the count is 0.
  bool AddReferenceUnlessZero() {
    // Relaxed, as in AddReference(): the caller received the object in a synchronised way.
    std::int64_t count = m_references.load(std::memory_order_relaxed);
    while (count != 0) {
      if (m_references.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
    }
    return false;
  }
  /// Releases a reference.
  /// @pre The caller holds a reference.
  /// @invalidates At 0, the object.
  /// @return The new count (low 32 bits).
  std::uint32_t ReleaseReference() {
    // Release: what this owner did to the object happens before its deletion by the last one, which acquires.
    const std::int64_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) OnReferenceDestory();
    return static_cast<std::uint32_t>(left);
  }
  /// @return The count at this moment (low 32 bits), for reports.
  std::uint32_t ReferenceCount() const {
    return static_cast<std::uint32_t>(m_references.load(std::memory_order_relaxed));
  }

 private:
  std::atomic<std::int64_t> m_references{0};
};
