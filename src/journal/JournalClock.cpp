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

// Held by whoever renews the anchor. The others do not wait, but read the clock meanwhile.
constinit std::atomic_flag g_isRenewed;
// Protected by g_isRenewed.
constinit ClockRate g_rate;

}  // namespace

// Acquire and release: each renewal sees the last one's data.
std::int64_t ReadClockNs() {
  static const bool hasTicks = HasConstantTicks();
  if (!hasTicks || g_isRenewed.test_and_set(std::memory_order_acquire)) return SteadyNs();
  std::int64_t ns = SteadyNs();
  if (g_rate.IsDue(ns)) {
    if (const auto sample = TakeSample(ReadTicks, SteadyNs)) ns = g_rate.Renew(g_clockAnchor, *sample);
  }
  g_isRenewed.clear(std::memory_order_release);
  return ns;
}

}  // namespace kalStore::internal
