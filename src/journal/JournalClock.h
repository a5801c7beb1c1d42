// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

namespace kalStore::internal {

/// From when on and how a counter of ticks is std::chrono::steady_clock. Anyone who finds it too old renews it.
///
/// Threads: any. A reader takes the members between two looks at the version: those that it finds are of one version
/// when it is even, and the same at both. The members are stored with release and loaded with acquire: a reader of a
/// member that is being changed sees the odd version before it at its second look.
struct ClockAnchor {
  std::atomic<std::uint32_t> version{0};  ///< odd while the other members are changed
  std::atomic<std::uint64_t> ticks{0};    ///< of the anchor
  std::atomic<std::uint64_t> window{0};   ///< for how many ticks it can be used; 0: not at all
  std::atomic<std::uint64_t> rate{0};     ///< nanoseconds of a tick, with 32 bits behind the point
  std::atomic<std::int64_t> ns{0};        ///< of the anchor
};
[[gnu::visibility("hidden")]] alignas(64) extern constinit ClockAnchor g_clockAnchor;

/// The processor's counter. It is read in a few nanoseconds, the clock in some ten.
inline std::uint64_t ReadTicks() {
#if defined(__x86_64__)
  return __builtin_ia32_rdtsc();
#elif defined(__aarch64__)
  std::uint64_t ticks;
  asm volatile("mrs %0, cntvct_el0" : "=r"(ticks));
  return ticks;
#else
  return 0;
#endif
}

/// The clock itself; renews the anchor where the processor has a counter of a constant rate.
std::int64_t ReadClockNs();

/// The time of std::chrono::steady_clock, to within a few microseconds. Never earlier on a thread than at its last
/// call, but for those microseconds while another thread renews the anchor.
inline std::int64_t JournalNowNs() {
  const std::uint32_t version = g_clockAnchor.version.load(std::memory_order_acquire);
  const std::uint64_t passed = ReadTicks() - g_clockAnchor.ticks.load(std::memory_order_acquire);
  if (passed < g_clockAnchor.window.load(std::memory_order_acquire)) [[likely]] {
    // At most a second: the product has at most 62 bits.
    const std::uint64_t passedNs = passed * g_clockAnchor.rate.load(std::memory_order_acquire) >> 32;
    const std::int64_t ns = g_clockAnchor.ns.load(std::memory_order_acquire);
    // No odd version is the even one that it is compared with.
    if (g_clockAnchor.version.load(std::memory_order_relaxed) == (version & ~1U)) [[likely]]
      return ns + static_cast<std::int64_t>(passedNs);
  }
  return ReadClockNs();
}

}  // namespace kalStore::internal
