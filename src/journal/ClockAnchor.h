// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace kalStore::internal {

/// A counter of ticks and a clock, both looked at at once.
struct ClockSample {
  std::uint64_t ticks;
  std::int64_t ns;
};

/// The narrowest of some looks at the clock, the counter and the clock again; nothing when the thread was
/// interrupted in each.
template <class ReadTicks, class ReadNs>
std::optional<ClockSample> TakeSample(ReadTicks readTicks, ReadNs readNs) {
  constexpr std::int64_t kWidestNs = 2000;
  std::optional<ClockSample> best;
  std::int64_t bestNs = kWidestNs + 1;
  for (int tries = 3; tries > 0; --tries) {
    const std::int64_t beforeNs = readNs();
    const std::uint64_t ticks = readTicks();
    const std::int64_t widthNs = readNs() - beforeNs;
    if (widthNs >= bestNs) continue;
    bestNs = widthNs;
    best = {ticks, beforeNs + widthNs / 2};
  }
  return best;
}

/// From when on and how a counter of ticks is a clock.
///
/// Threads: any reader, one writer at a time. A reader takes the members between two looks at the version:
/// those that it finds are of one version when it is even, and the same at both. The members are stored with
/// release and loaded with acquire: a reader of a member that is being changed sees the odd version before it
/// at its second look.
struct ClockAnchor {
  std::atomic<std::uint32_t> version{0};  ///< odd while the other members are changed
  std::atomic<std::uint64_t> ticks{0};    ///< of the anchor
  std::atomic<std::uint64_t> window{0};   ///< for how many ticks it can be used; 0: not at all
  std::atomic<std::uint64_t> rate{0};     ///< nanoseconds of a tick, with 32 bits behind the point
  std::atomic<std::int64_t> ns{0};        ///< of the anchor
};

/// The time when the counter had so many ticks; nothing when the anchor is too old or too young for them, or
/// is being changed.
inline std::optional<std::int64_t> TimeAt(const ClockAnchor& anchor, std::uint64_t ticks) {
  const std::uint32_t version = anchor.version.load(std::memory_order_acquire);
  const std::uint64_t passed = ticks - anchor.ticks.load(std::memory_order_acquire);
  if (passed >= anchor.window.load(std::memory_order_acquire)) [[unlikely]]
    return std::nullopt;
  // At most a second: the product has at most 62 bits.
  const std::uint64_t passedNs = passed * anchor.rate.load(std::memory_order_acquire) >> 32;
  const std::int64_t ns = anchor.ns.load(std::memory_order_acquire);
  // No odd version is the even one that it is compared with.
  if (anchor.version.load(std::memory_order_relaxed) != (version & ~1U)) [[unlikely]]
    return std::nullopt;
  return ns + static_cast<std::int64_t>(passedNs);
}

/// Keeps an anchor: measures the counter's rate from one sample to the next.
///
/// Threads: one at a time.
class ClockRate {
 public:
  /// Whether enough time has passed since the last sample for the next one.
  bool IsDue(std::int64_t nowNs) const;

  /// Takes the next sample, and changes the anchor by it. Returns the sample's time: the clock's, or the
  /// anchor's where that was ahead.
  std::int64_t Renew(ClockAnchor& anchor, const ClockSample& sample);

 private:
  ClockSample m_last{0, 0};
  double m_rate = 0;  // Nanoseconds of a tick; 0: not measured yet.
};

}  // namespace kalStore::internal
