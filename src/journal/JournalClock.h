// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "journal/ClockAnchor.h"
#include "journal/JournalThread.h"

namespace kalStore::internal {

/// Of std::chrono::steady_clock. Anyone who finds it too old renews it.
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

/// The time of std::chrono::steady_clock, to within some microseconds. Never earlier than at the thread's
/// last call: anchors differ by those, and more when a counter jumps.
inline std::int64_t JournalNowNs() {
  const std::optional<std::int64_t> ns = TimeAt(g_clockAnchor, ReadTicks());
  return t_journal.lastNs = std::max(t_journal.lastNs, ns ? *ns : ReadClockNs());
}

}  // namespace kalStore::internal
