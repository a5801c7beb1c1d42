// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalClock.h"

#include <atomic>
#include <chrono>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace kalStore::internal {

alignas(64) constinit ClockAnchor g_clockAnchor;

namespace {

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
// Protected by g_isRenewed.
constinit ClockRate g_rate;

}  // namespace

// Acquire and release: each renewal sees the last one's data.
std::int64_t ReadClockNs() {
  static const bool hasTicks = HasConstantTicks();
  if (!hasTicks || g_isRenewed.test_and_set(std::memory_order_acquire)) return SteadyNs();
  const std::int64_t nowNs = SteadyNs();
  const std::int64_t ns = g_rate.IsDue(nowNs) ? g_rate.Renew(g_clockAnchor, TakeSample()) : nowNs;
  g_isRenewed.clear(std::memory_order_release);
  return ns;
}

}  // namespace kalStore::internal
