// SPDX-License-Identifier: Apache-2.0
#include "util/clock_policy.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdint>
#include <limits>
#include <thread>
#include <type_traits>

namespace {

template <class Policy>
class Clock : public testing::Test {};
using AllClocks = testing::Types<timer_policy, tick_policy, low_tick_policy>;
TYPED_TEST_SUITE(Clock, AllClocks);

// The system's clock that a policy reads, in the policy's steps.
template <class Policy>
long SystemTime() {
  timespec time{};
  clock_gettime(std::is_same_v<Policy, low_tick_policy> ? CLOCK_MONOTONIC_COARSE : CLOCK_MONOTONIC, &time);
  const std::int64_t microseconds = std::int64_t{1'000'000} * time.tv_sec + time.tv_nsec / 1000;
  const long step = std::is_same_v<Policy, tick_policy> ? 1000 : 1;
  // A long of 32 bits starts again at 0 after its largest value.
  const auto now = static_cast<long>(microseconds & std::numeric_limits<long>::max());
  return now - now % step;
}

// Between two readings, the second of which may have started again at 0.
long Passed(long from, long to) {
  return static_cast<long>((static_cast<unsigned long>(to) - static_cast<unsigned long>(from)) &
                           std::numeric_limits<long>::max());
}

}  // namespace

TYPED_TEST(Clock, CountsMicrosecondsOfTheSystemsMonotonicClock) {
  for (int i = 0; i < 1000; ++i) {
    const long before = SystemTime<TypeParam>();
    const long now = TypeParam::now();
    ASSERT_LE(Passed(before, now), Passed(before, SystemTime<TypeParam>()));
  }
}

TYPED_TEST(Clock, StaysBelowItsLargestValueAndFarBelowWhereALongHas64Bits) {
  EXPECT_GE(TypeParam::now(), 0);
  EXPECT_LE(TypeParam::now(), TypeParam::max_time_value() / (sizeof(long) == 8 ? 2 : 1));
}

TEST(TickClock, StepsWholeMilliseconds) {
  for (int i = 0; i < 100; ++i) EXPECT_EQ(tick_policy::now() % 1000, 0);
}

TEST(MockTime, IsOffAtFirstAndAgainWithAllBitsSet) {
  EXPECT_EQ(get_mock_time(), -1);
  set_mock_time(5000);
  EXPECT_EQ(get_mock_time(), 5000);
  set_mock_time(0);
  EXPECT_EQ(get_mock_time(), 0);
  set_mock_time(~0ul);
  EXPECT_EQ(get_mock_time(), -1);
}

TEST(MockTime, LeavesTheClocksThemselvesRunning) {
  const long before = SystemTime<timer_policy>();
  set_mock_time(1);
  const long now = timer_policy::now();
  set_mock_time(~0ul);
  EXPECT_LE(Passed(before, now), Passed(before, SystemTime<timer_policy>()));
}

TEST(MockTime, IsTheSameForAllThreads) {
  std::thread([] { set_mock_time(77); }).join();
  EXPECT_EQ(get_mock_time(), 77);
  set_mock_time(~0ul);
}
