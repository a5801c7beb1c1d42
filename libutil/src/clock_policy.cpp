// SPDX-License-Identifier: Apache-2.0
#include "util/clock_policy.h"

#include <time.h>  // NOLINT(modernize-deprecated-headers): clock_gettime is not in <ctime>.

#include <atomic>
#include <cstdint>
#include <limits>

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr long kNanosecondsPerMicrosecond = 1'000;
constexpr long kMicrosecondsPerMillisecond = 1'000;
constexpr long kNoMockTime = -1;

std::atomic<long> g_mockTime{kNoMockTime};

// A long of 32 bits starts again at 0 after its largest value, every 36 minutes, and is never negative.
long Microseconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<long>(
      (time.tv_sec * kMicrosecondsPerSecond + time.tv_nsec / kNanosecondsPerMicrosecond) &
      std::numeric_limits<long>::max());
}

}  // namespace

long timer_policy::now() {
  return Microseconds(CLOCK_MONOTONIC);
}

long timer_policy::max_time_value() {
  return std::numeric_limits<long>::max();
}

long tick_policy::now() {
  const long now = Microseconds(CLOCK_MONOTONIC);
  return now - now % kMicrosecondsPerMillisecond;
}

long tick_policy::max_time_value() {
  return std::numeric_limits<long>::max();
}

long low_tick_policy::now() {
  return Microseconds(CLOCK_MONOTONIC_COARSE);
}

long low_tick_policy::max_time_value() {
  return std::numeric_limits<long>::max();
}

long get_mock_time() {
  return g_mockTime.load(std::memory_order_relaxed);
}

void set_mock_time(unsigned long time) {
  g_mockTime.store(static_cast<long>(time), std::memory_order_relaxed);
}
