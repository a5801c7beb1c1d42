// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace kalStore::internal {

/// How long a removal waits for a run in progress, in all.
inline constexpr long kRemovalCeilingMs = 3000;

/// The clock and the pauses of everything that waits: a removal, a facade's teardown, the measure of slow
/// callbacks. Threads: any.
struct WaitClock {
  long (*nowMs)();       ///< Monotonic. The clock itself: a mock time of the meters does not stop a wait.
  void (*sleepOneMs)();  ///< Between two looks at what is waited for.
  void (*yield)();       ///< The same without the sleep.
};

/// The clock in use.
const WaitClock& CurrentWaitClock();

/// The time between two readings of a clock. One that counts microseconds in 32 bits starts again at 0 every
/// 36 minutes.
long ElapsedMs(long startMs, long nowMs);

/// Replaces the clock, so that a test moves the time itself; null restores the real one. The clock must
/// outlive every wait.
void SetWaitClock(const WaitClock* clock);

}  // namespace kalStore::internal
