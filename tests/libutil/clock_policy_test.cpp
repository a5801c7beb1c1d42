// SPDX-License-Identifier: Apache-2.0
#include "util/clock_policy.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <limits>
#include <thread>

namespace {

template <class Policy>
class Clock : public testing::Test {};
using AllClocks = testing::Types<timer_policy, tick_policy, low_tick_policy>;
TYPED_TEST_SUITE(Clock, AllClocks);

// Between two readings, the second of which may have started again at 0.
long Passed(long from, long to) {
  return static_cast<long>((static_cast<unsigned long>(to) - static_cast<unsigned long>(from)) &
                           std::numeric_limits<long>::max());
}

}  // namespace

TYPED_TEST(Clock, NeverGoesBack) {
  long last = TypeParam::now();
  for (int i = 0; i < 10000; ++i) {
    const long now = TypeParam::now();
    ASSERT_LT(Passed(last, now), TypeParam::max_time_value() / 2);
    last = now;
  }
}

TYPED_TEST(Clock, CountsMicroseconds) {
  const long begin = timer_policy::now();
  const long before = TypeParam::now();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const long passed = Passed(before, TypeParam::now());
  EXPECT_GE(passed, 35'000);  // The coarse clock is some milliseconds late.
  EXPECT_LE(passed, Passed(begin, timer_policy::now()) + 15'000);
}

TYPED_TEST(Clock, StaysBelowItsLargestValueAndFarBelowWhereALongHas64Bits) {
  EXPECT_GE(TypeParam::now(), 0);
  EXPECT_LE(TypeParam::now(), TypeParam::max_time_value() / (sizeof(long) == 8 ? 2 : 1));
}

TEST(TickClock, StepsWholeMilliseconds) {
  for (int i = 0; i < 100; ++i) EXPECT_EQ(tick_policy::now() % 1000, 0);
}

TEST(Clocks, AgreeWithinTheirSteps) {
  const long before = timer_policy::now();
  const long coarse = low_tick_policy::now();
  const long tick = tick_policy::now();
  const long after = timer_policy::now();
  const long slack = 1'000'000;
  EXPECT_LE(Passed(before - slack, coarse), Passed(before - slack, after));
  EXPECT_LE(Passed(before - 1000, tick), Passed(before - 1000, after));
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
  const long before = timer_policy::now();
  set_mock_time(1);
  EXPECT_LT(Passed(before, timer_policy::now()), timer_policy::max_time_value() / 2);
  set_mock_time(~0ul);
}

TEST(MockTime, IsTheSameForAllThreads) {
  std::thread([] { set_mock_time(77); }).join();
  EXPECT_EQ(get_mock_time(), 77);
  set_mock_time(~0ul);
}
