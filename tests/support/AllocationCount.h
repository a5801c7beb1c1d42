// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>

/// Counts what the calling thread allocates with operator new, in whatever library, while it lives. Works
/// with the sanitizers too. A program that names anything here gets its operator new and delete replaced.
class AllocationCount {
 public:
  AllocationCount();
  AllocationCount(const AllocationCount&) = delete;
  AllocationCount& operator=(const AllocationCount&) = delete;

  /// Allocations of the calling thread since construction. REQUIRES: the thread that constructed.
  std::size_t Count() const;

 private:
  const std::size_t m_start;
};

/// Allocations of the process by operator new that are not deleted yet, be it on whatever thread.
long LiveAllocations();

/// Makes the n-th allocation of the calling thread from now on, counted from 1, fail with std::bad_alloc; the
/// ones after it succeed again. One at a time in each thread.
///
///   for (std::size_t n = 1;; ++n) {
///     FailAllocation nth(n);
///     ...
///     if (!nth.Fired()) break;  // nothing left to fail
///   }
class FailAllocation {
 public:
  explicit FailAllocation(std::size_t n);
  ~FailAllocation();
  FailAllocation(const FailAllocation&) = delete;
  FailAllocation& operator=(const FailAllocation&) = delete;

  bool Fired() const;
};

/// Calls a function inside the calling thread's first allocation of at least `size` bytes, before it is made:
/// a place in the middle of an operation, the same in every run. One at a time in each thread.
class AtAllocation {
 public:
  AtAllocation(std::size_t size, std::function<void()> call);
  ~AtAllocation();
  AtAllocation(const AtAllocation&) = delete;
  AtAllocation& operator=(const AtAllocation&) = delete;

  bool Fired() const;

 private:
  const std::function<void()> m_call;
};

/// The same of the calling thread's first deletion of at least `size` bytes.
class AtDeletion {
 public:
  AtDeletion(std::size_t size, std::function<void()> call);
  ~AtDeletion();
  AtDeletion(const AtDeletion&) = delete;
  AtDeletion& operator=(const AtDeletion&) = delete;

  bool Fired() const;

 private:
  const std::function<void()> m_call;
};
