// SPDX-License-Identifier: Apache-2.0
#include "tessel/timer_fact.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr long kMax = std::numeric_limits<long>::max();
constexpr long kMin = std::numeric_limits<long>::min();

template <class Policy>
class TimerFact : public ::testing::Test {
 protected:
  using Meter = timer_fact<Policy>;
  ~TimerFact() override { set_mock_time(static_cast<unsigned long>(Meter::kMockTimeDisabled)); }
};

using Policies = ::testing::Types<timer_policy, tick_policy, low_tick_policy>;
TYPED_TEST_SUITE(TimerFact, Policies);

struct Row {
  long tag;
  long now;
  long elapsed;
  long mills;
  long sec;
};

TYPED_TEST(TimerFact, MeasuresFromItsTag) {
  const long max = TypeParam::max_time_value();
  const Row rows[] = {
      {2000, 5000, 3000, 3, 0},
      {0, 0, 0, 0, 0},
      {5000, 5000, 0, 0, 0},
      {999, 1001, 2, 1,
       0},  // The difference of whole milliseconds, not the whole milliseconds of the difference.
      {1000, 1999, 999, 0, 0},
      {999999, 1000000, 1, 1, 1},
      {1, 3000001, 3000000, 3000, 3},
      {-1500, 1500, 3000, 2, 0},  // Cut toward zero on both sides.
      {-5000, -4000, 1000, 1, 0},
      {-1999, -1001, 998, 0, 0},
      {-1000, 999, 1999, 1, 0},
      {-999, -1500, max - 501, max / 1000, 0},
      {-1000, -5000, max - 4000, max / 1000 - 4, 0},
      {-2000000, -7000000, max - 5000000, max / 1000 - 5000, max / 1000000 - 5},
      {0, max, max, max / 1000, max / 1000000},
      // The clock has wrapped: up to its largest value, then on from 0.
      {max - 10, 5, 15, -(max - 10) / 1000, -(max - 10) / 1000000},
      {max - 1, 0, 1, -(max - 1) / 1000, -(max - 1) / 1000000},
      {max - 5000, 7000, 12000, 12, -(max - 5000) / 1000000},
      {max - 5000000, 7000000, 12000000, 12000, 12},
      {6000, 5000, max - 1000, 5 + (max - 6000) / 1000, 0},
      // At the very end of the clock's range there is nothing to add.
      {max, 5000, 5000 - max, 5 - max / 1000, 0 - max / 1000000},
      {max, max, 0, 0, 0},
  };
  for (const Row& row : rows) {
    typename TestFixture::Meter meter(row.tag);
    TestFixture::Meter::MockNow(static_cast<unsigned long>(row.now));
    EXPECT_EQ(row.elapsed, meter.elapsed()) << row.tag << " to " << row.now;
    EXPECT_EQ(row.mills, meter.elapsed_mills()) << row.tag << " to " << row.now;
    EXPECT_EQ(row.sec, meter.elapsed_sec()) << row.tag << " to " << row.now;

    EXPECT_TRUE(meter.overtime(row.elapsed));
    EXPECT_TRUE(meter.overtime_mills(row.mills));
    EXPECT_TRUE(meter.overtime_sec(row.sec));
    if (row.elapsed < kMax) {
      EXPECT_FALSE(meter.overtime(row.elapsed + 1));
    }
    EXPECT_FALSE(meter.overtime_mills(row.mills + 1));
    EXPECT_FALSE(meter.overtime_sec(row.sec + 1));
    EXPECT_EQ(row.tag, meter.latest_tag());
  }
}

TYPED_TEST(TimerFact, StaysDefinedForEveryTagAndTime) {
  const long values[] = {kMin, kMin + 1, -1000000, -2, 0, 1, kMax - 1, kMax};
  for (const long tag : values) {
    for (const long now : values) {
      typename TestFixture::Meter meter(tag);
      TestFixture::Meter::MockNow(static_cast<unsigned long>(now));
      EXPECT_TRUE(meter.overtime(meter.elapsed()));
      EXPECT_TRUE(meter.overtime_mills(meter.elapsed_mills()));
      EXPECT_TRUE(meter.overtime_sec(meter.elapsed_sec()));
    }
  }
}

TYPED_TEST(TimerFact, AlwaysReachesALimitThatIsNotPositive) {
  typename TestFixture::Meter meter(5000);
  TestFixture::Meter::MockNow(5000);
  EXPECT_TRUE(meter.overtime(0));
  EXPECT_TRUE(meter.overtime(-1));
  EXPECT_TRUE(meter.overtime_mills(0));
  EXPECT_TRUE(meter.overtime_mills(kMin));
  EXPECT_TRUE(meter.overtime_sec(0));
  EXPECT_TRUE(meter.overtime_sec(-1));
}

TYPED_TEST(TimerFact, StartsAtTheClockWithoutATag) {
  const long before = TypeParam::now();
  const typename TestFixture::Meter meter(-1);
  const long after = TypeParam::now();
  EXPECT_LE(before, meter.latest_tag());
  EXPECT_GE(after, meter.latest_tag());
  EXPECT_GE(meter.elapsed(), 0);
}

TYPED_TEST(TimerFact, StartsAtTheMockTimeWithoutATag) {
  TestFixture::Meter::MockNow(5000);
  typename TestFixture::Meter meter(-1);
  EXPECT_EQ(5000, meter.latest_tag());
  EXPECT_EQ(5000, TestFixture::Meter::now());
  TestFixture::Meter::MockNow(7000);
  meter.reset(-1);
  EXPECT_EQ(7000, meter.latest_tag());
}

TYPED_TEST(TimerFact, StartsAgainAtTheTagGiven) {
  typename TestFixture::Meter meter(-1);
  meter.reset(123);
  EXPECT_EQ(123, meter.latest_tag());
  meter.reset(0);
  EXPECT_EQ(0, meter.latest_tag());
  meter.reset(-2);
  EXPECT_EQ(-2, meter.latest_tag());
}

TYPED_TEST(TimerFact, SharesTheMockTimeWithEveryPolicy) {
  TestFixture::Meter::MockNow(42);
  EXPECT_EQ(42, timer_fact<timer_policy>::now());
  EXPECT_EQ(42, timer_fact<tick_policy>::now());
  EXPECT_EQ(42, timer_fact<low_tick_policy>::now());
  EXPECT_EQ(42, get_mock_time());
}

TYPED_TEST(TimerFact, TakesZeroForAMockTime) {
  TestFixture::Meter::MockNow(0);
  EXPECT_EQ(0, TestFixture::Meter::now());
}

TYPED_TEST(TimerFact, GoesBackToTheClockWhenAllBitsAreSet) {
  TestFixture::Meter::MockNow(5000);
  TestFixture::Meter::MockNow(~0UL);
  EXPECT_EQ(TestFixture::Meter::kMockTimeDisabled, get_mock_time());
  const long before = TypeParam::now();
  EXPECT_LE(before, TestFixture::Meter::now());
}

TYPED_TEST(TimerFact, ReadsTheMockTimeAfreshOnEveryCall) {
  const typename TestFixture::Meter meter(1000);
  for (long now = 1000; now < 5000; now += 1000) {
    TestFixture::Meter::MockNow(static_cast<unsigned long>(now));
    EXPECT_EQ(now - 1000, meter.elapsed());
  }
  EXPECT_EQ(1000, meter.latest_tag());
}

// Components link to these names.
TEST(TimerFactType, MeasuresWhileConstAndComparesWithALimitOnlyWhenNot) {
  using Meter = timer_fact<timer_policy>;
  static_assert(std::is_same_v<decltype(&Meter::overtime), bool (Meter::*)(long)>);
  static_assert(std::is_same_v<decltype(&Meter::overtime_mills), bool (Meter::*)(long)>);
  static_assert(std::is_same_v<decltype(&Meter::overtime_sec), bool (Meter::*)(long)>);
  static_assert(std::is_same_v<decltype(&Meter::elapsed), long (Meter::*)() const>);
  static_assert(std::is_same_v<decltype(&Meter::elapsed_mills), long (Meter::*)() const>);
  static_assert(std::is_same_v<decltype(&Meter::elapsed_sec), long (Meter::*)() const>);
  static_assert(std::is_same_v<decltype(&Meter::latest_tag), long (Meter::*)() const>);
}

TEST(TimerFactType, HoldsOneTag) {
  static_assert(sizeof(timer_fact<timer_policy>) == sizeof(long));
  static_assert(timer_fact<timer_policy>::kMockTimeDisabled == -1);
  static_assert(std::is_same_v<kalStore::timer_fact<tick_policy>, timer_fact<tick_policy>>);
}

}  // namespace
