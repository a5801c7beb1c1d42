// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalClock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace kalStore::internal {

alignas(64) constinit ClockAnchor g_clockAnchor;

namespace {

// The rate is measured over this at least: the two looks at the clock are off by some ten nanoseconds each.
constexpr std::int64_t kShortestStretchNs = 10'000'000;
// An anchor is used for so many times the stretch that its rate was measured over, and for this at most.
constexpr std::int64_t kWindowByStretch = 10;
constexpr std::int64_t kLongestWindowNs = 1'000'000'000;
// A counter whose rate changes more than this was stopped, or is another processor's.
constexpr double kLargestChange = 1e-3;

// Whether the counter runs at a constant rate, also while the processor sleeps.
bool HasConstantTicks() {
#if defined(__x86_64__)
  unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
  return __get_cpuid(0x80000007, &eax, &ebx, &ecx, &edx) != 0 && (edx >> 8 & 1) != 0;
#elif defined(__aarch64__)
  return true;
#else
  return false;
#endif
}

struct ClockSample {
  std::uint64_t ticks;
  std::int64_t ns;
};

std::int64_t SteadyNs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

// Both at once, as far as they can be: the best of some tries, since the thread may be interrupted in one.
ClockSample TakeSample() {
  ClockSample best{};
  std::uint64_t bestWidth = ~std::uint64_t{0};
  for (int tries = 3; tries > 0; --tries) {
    const std::uint64_t ticks = ReadTicks();
    const std::int64_t ns = SteadyNs();
    const std::uint64_t width = ReadTicks() - ticks;
    if (width >= bestWidth) continue;
    bestWidth = width;
    best = {ticks, ns};
  }
  return best;
}

// Held by whoever renews the anchor. The others do not wait, but read the clock meanwhile.
constinit std::atomic_flag g_isRenewed;
// Of the last renewal. Protected by g_isRenewed.
constinit ClockSample g_last{};
constinit double g_lastRate = 0;  // Nanoseconds of a tick; 0: not measured yet.

void Publish(std::uint64_t ticks, std::int64_t ns, double rate, double windowNs) {
  const std::uint32_t version = g_clockAnchor.version.load(std::memory_order_relaxed);
  g_clockAnchor.version.store(version + 1, std::memory_order_relaxed);
  g_clockAnchor.ticks.store(ticks, std::memory_order_release);
  g_clockAnchor.ns.store(ns, std::memory_order_release);
  g_clockAnchor.rate.store(static_cast<std::uint64_t>(std::ldexp(rate, 32)), std::memory_order_release);
  g_clockAnchor.window.store(rate > 0 ? static_cast<std::uint64_t>(windowNs / rate) : 0,
                             std::memory_order_release);
  g_clockAnchor.version.store(version + 2, std::memory_order_release);
}

// The latest time that the old anchor gave until then. A counter that was set back meanwhile says nothing.
std::int64_t LatestNs(std::uint64_t ticks) {
  const std::uint64_t begin = g_clockAnchor.ticks.load(std::memory_order_relaxed);
  const std::uint64_t window = g_clockAnchor.window.load(std::memory_order_relaxed);
  if (window == 0) return 0;
  const std::uint64_t passed = ticks > begin ? std::min(ticks - begin, window) : 0;
  return g_clockAnchor.ns.load(std::memory_order_relaxed) +
         static_cast<std::int64_t>(passed * g_clockAnchor.rate.load(std::memory_order_relaxed) >> 32);
}

// REQUIRES: g_isRenewed is held.
std::int64_t Renew() {
  const std::int64_t nowNs = SteadyNs();
  if (g_last.ns != 0 && nowNs - g_last.ns < kShortestStretchNs) return nowNs;
  const ClockSample sample = TakeSample();
  if (g_last.ns == 0) {
    g_last = sample;
    return sample.ns;
  }
  const std::int64_t stretchNs = sample.ns - g_last.ns;
  const double rate = static_cast<double>(stretchNs) / static_cast<double>(sample.ticks - g_last.ticks);
  const bool isConstant =
      sample.ticks > g_last.ticks && (g_lastRate == 0 || std::abs(rate / g_lastRate - 1) < kLargestChange);
  // Time does not go back: what the old anchor was ahead of the clock is lost again over the new window. A counter
  // that jumped, as while the machine was suspended, says nothing of that.
  const std::int64_t ns = isConstant ? std::max(sample.ns, LatestNs(sample.ticks)) : sample.ns;
  const auto aheadNs = static_cast<double>(ns - sample.ns);
  const auto windowNs = static_cast<double>(std::min(kWindowByStretch * stretchNs, kLongestWindowNs));
  Publish(sample.ticks, ns, isConstant && aheadNs < windowNs ? rate * (1 - aheadNs / windowNs) : 0, windowNs);
  g_last = sample;
  g_lastRate = isConstant ? rate : 0;
  return ns;
}

}  // namespace

// Acquire and release: each renewal sees the last one's data.
std::int64_t ReadClockNs() {
  static const bool hasTicks = HasConstantTicks();
  if (!hasTicks || g_isRenewed.test_and_set(std::memory_order_acquire)) return SteadyNs();
  const std::int64_t ns = Renew();
  g_isRenewed.clear(std::memory_order_release);
  return ns;
}

}  // namespace kalStore::internal
