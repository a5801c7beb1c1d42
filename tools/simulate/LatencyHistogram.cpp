// SPDX-License-Identifier: Apache-2.0
#include "simulate/LatencyHistogram.h"

#include <algorithm>
#include <bit>

namespace simulate {

void LatencyHistogram::Add(std::int64_t nanoseconds) {
  nanoseconds = std::max<std::int64_t>(nanoseconds, 0);
  m_counts[bucketOf(nanoseconds)].fetch_add(1, std::memory_order_relaxed);
  std::int64_t greatest = Greatest();
  while (greatest < nanoseconds &&
         !m_greatest.compare_exchange_weak(greatest, nanoseconds, std::memory_order_relaxed)) {
  }
}

std::uint64_t LatencyHistogram::Count() const {
  std::uint64_t count = 0;
  for (const auto& bucket : m_counts) count += bucket.load(std::memory_order_relaxed);
  return count;
}

std::int64_t LatencyHistogram::Quantile(double share) const {
  const auto rank = static_cast<std::uint64_t>(share * static_cast<double>(Count()));
  std::uint64_t below = 0;
  for (std::size_t bucket = 0; bucket + 1 < kBuckets; ++bucket) {
    below += m_counts[bucket].load(std::memory_order_relaxed);
    if (below > rank) return std::min(startOf(bucket + 1) - 1, Greatest());
  }
  return Greatest();
}

// Below 2^(kStepBits + 1) every duration has a bucket of its own; from there on the leading bits choose.
std::size_t LatencyHistogram::bucketOf(std::int64_t nanoseconds) {
  const auto value = static_cast<std::uint64_t>(nanoseconds);
  const int shift = std::max(0, static_cast<int>(std::bit_width(value)) - kStepBits - 1);
  return (static_cast<std::size_t>(shift) << kStepBits) + static_cast<std::size_t>(value >> shift);
}

std::int64_t LatencyHistogram::startOf(std::size_t bucket) {
  constexpr std::size_t kSteps = std::size_t{1} << kStepBits;
  if (bucket < 2 * kSteps) return static_cast<std::int64_t>(bucket);
  const std::size_t shift = (bucket >> kStepBits) - 1;
  return static_cast<std::int64_t>((bucket & (kSteps - 1)) + kSteps) << shift;
}

}  // namespace simulate
