#pragma once

#include <atomic>
#include <cstdint>

#include "util/CCmMutexThread.h"
#include "util/export.h"

/// An intrusive reference counter; `LockType` names the threads that share the object. The counter starts at
/// 0: the first owner adds the first reference.
template <class LockType>
class CCmReferenceControlT;

/// Shared between threads: the counter is atomic, any thread may add and release.
template <>
class UTIL_API CCmReferenceControlT<CCmMutexThread> {
 public:
  CCmReferenceControlT() = default;
  CCmReferenceControlT(const CCmReferenceControlT&) = delete;
  CCmReferenceControlT& operator=(const CCmReferenceControlT&) = delete;
  virtual ~CCmReferenceControlT();

  /// Called once, when the last reference is released. Deletes the object.
  virtual void OnReferenceDestory();

  /// One reference more; returns the new count (low 32 bits). REQUIRES: the caller holds a reference, or the
  /// object has no other user yet.
  std::uint32_t AddReference();
  /// One reference less; returns the new count (low 32 bits). At 0 the object is gone.
  std::uint32_t ReleaseReference();
  /// The count at this moment (low 32 bits), for reports.
  std::uint32_t ReferenceCount() const;

 private:
  std::atomic<std::int64_t> m_references{0};
};
