// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace simulate {

/// How often something happened over the run, in a fixed number of equal spans.
///
/// Threads: Add() from any; Count() includes all additions that happened before.
class TimeBins {
 public:
  static constexpr std::size_t kCount = 240;

  /// `share`: the part of the planned run that is over, 0 to 1; later than that counts into the last span.
  void Add(double share) {
    const double bin = std::clamp(share, 0.0, 1.0) * kCount;
    m_counts[std::min(static_cast<std::size_t>(bin), kCount - 1)].fetch_add(1, std::memory_order_relaxed);
  }
  std::uint32_t Count(std::size_t bin) const { return m_counts[bin].load(std::memory_order_relaxed); }
  std::uint32_t Greatest() const {
    std::uint32_t greatest = 0;
    for (std::size_t bin = 0; bin < kCount; ++bin) greatest = std::max(greatest, Count(bin));
    return greatest;
  }

 private:
  std::array<std::atomic<std::uint32_t>, kCount> m_counts{};
};

}  // namespace simulate
