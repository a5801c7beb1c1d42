// SPDX-License-Identifier: Apache-2.0
#include "journal/ClockAnchor.h"

#include <algorithm>
#include <cmath>

namespace kalStore::internal {
namespace {

// The rate is measured over this at least: the two looks at the clock are off by some ten nanoseconds each.
constexpr std::int64_t kShortestStretchNs = 10'000'000;
// An anchor is used for so many times the stretch that its rate was measured over, and for this at most.
constexpr std::int64_t kWindowByStretch = 10;
constexpr std::int64_t kLongestWindowNs = 1'000'000'000;
// A counter whose rate changes more than this was stopped, or is another processor's.
constexpr double kLargestChange = 1e-3;

void Publish(ClockAnchor& anchor, std::uint64_t ticks, std::int64_t ns, double rate, double windowNs) {
  const std::uint32_t version = anchor.version.load(std::memory_order_relaxed);
  anchor.version.store(version + 1, std::memory_order_relaxed);
  anchor.ticks.store(ticks, std::memory_order_release);
  anchor.ns.store(ns, std::memory_order_release);
  anchor.rate.store(static_cast<std::uint64_t>(std::ldexp(rate, 32)), std::memory_order_release);
  anchor.window.store(rate > 0 ? static_cast<std::uint64_t>(windowNs / rate) : 0, std::memory_order_release);
  anchor.version.store(version + 2, std::memory_order_release);
}

// The latest time that the anchor gave until then, its own if it gave none. A counter that was set back
// meanwhile says nothing.
std::int64_t LatestNs(const ClockAnchor& anchor, std::uint64_t ticks) {
  const std::uint64_t begin = anchor.ticks.load(std::memory_order_relaxed);
  const std::uint64_t window = anchor.window.load(std::memory_order_relaxed);
  const std::uint64_t passed = ticks > begin ? std::min(ticks - begin, window) : 0;
  return anchor.ns.load(std::memory_order_relaxed) +
         static_cast<std::int64_t>(passed * anchor.rate.load(std::memory_order_relaxed) >> 32);
}

}  // namespace

bool ClockRate::IsDue(std::int64_t nowNs) const {
  return m_last.ns == 0 || nowNs - m_last.ns >= kShortestStretchNs;
}

std::int64_t ClockRate::Renew(ClockAnchor& anchor, const ClockSample& sample) {
  if (m_last.ns == 0) {
    m_last = sample;
    return sample.ns;
  }
  const std::int64_t stretchNs = sample.ns - m_last.ns;
  const double rate = static_cast<double>(stretchNs) / static_cast<double>(sample.ticks - m_last.ticks);
  const bool isConstant =
      sample.ticks > m_last.ticks && (m_rate == 0 || std::abs(rate / m_rate - 1) < kLargestChange);
  // Time does not go back: what the old anchor was ahead of the clock is lost again over the new window. A
  // counter that jumped, as while the machine was suspended, says nothing of that.
  const std::int64_t ns = isConstant ? std::max(sample.ns, LatestNs(anchor, sample.ticks)) : sample.ns;
  const auto aheadNs = static_cast<double>(ns - sample.ns);
  const auto windowNs = static_cast<double>(std::min(kWindowByStretch * stretchNs, kLongestWindowNs));
  Publish(anchor, sample.ticks, ns, isConstant && aheadNs < windowNs ? rate * (1 - aheadNs / windowNs) : 0,
          windowNs);
  m_last = sample;
  m_rate = isConstant ? rate : 0;
  return ns;
}

}  // namespace kalStore::internal
