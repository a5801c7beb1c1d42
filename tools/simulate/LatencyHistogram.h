// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace simulate {

/// Counts durations in buckets that are at most 1/32 of their value wide, so that a run of any length takes
/// the same memory.
///
/// Threads: Add() from any; the rest includes all additions that happened before.
class LatencyHistogram {
 public:
  void Add(std::int64_t nanoseconds);

  std::uint64_t Count() const;
  /// The duration that `share` (0 to 1) of those added do not exceed, to the width of a bucket; 0 without
  /// any.
  std::int64_t Quantile(double share) const;
  std::int64_t Greatest() const { return m_greatest.load(std::memory_order_relaxed); }

 private:
  static constexpr int kStepBits = 5;  // 32 buckets from one power of two to the next.
  static constexpr std::size_t kBuckets = (64 - kStepBits) << kStepBits;

  static std::size_t bucketOf(std::int64_t nanoseconds);
  static std::int64_t startOf(std::size_t bucket);

  std::array<std::atomic<std::uint64_t>, kBuckets> m_counts{};
  std::atomic<std::int64_t> m_greatest{0};
};

}  // namespace simulate
