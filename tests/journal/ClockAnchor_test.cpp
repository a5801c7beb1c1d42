// SPDX-License-Identifier: Apache-2.0
#include "journal/ClockAnchor.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>
#include <vector>

namespace kalStore::internal {
namespace {

constexpr std::int64_t kMs = 1'000'000;
constexpr std::int64_t kUs = 1'000;

// A counter of two ticks a nanosecond.
std::uint64_t TicksAt(std::int64_t ns) {
  return 2 * static_cast<std::uint64_t>(ns);
}
ClockSample SampleAt(std::int64_t ns) {
  return {TicksAt(ns), ns};
}

struct ClockAnchorTest : testing::Test {
  // Measures over 20 ms, until then.
  void Measure(std::int64_t ns) {
    rate.Renew(anchor, SampleAt(ns - 20 * kMs));
    EXPECT_EQ(rate.Renew(anchor, SampleAt(ns)), ns);
  }
  std::optional<std::int64_t> TimeAtNs(std::int64_t ns) const { return TimeAt(anchor, TicksAt(ns)); }

  ClockAnchor anchor;
  ClockRate rate;
};

TEST_F(ClockAnchorTest, GivesNoTimeBeforeTheRateIsMeasured) {
  EXPECT_EQ(TimeAtNs(0), std::nullopt);
  EXPECT_EQ(rate.Renew(anchor, SampleAt(500 * kMs)), 500 * kMs);
  EXPECT_EQ(TimeAtNs(500 * kMs), std::nullopt);
}

TEST_F(ClockAnchorTest, IsTheClockForTenTimesAsLongAsItWasMeasured) {
  Measure(520 * kMs);
  for (const std::int64_t ns : {520 * kMs, 520 * kMs + 1, 600 * kMs, 720 * kMs - 1})
    EXPECT_EQ(TimeAtNs(ns), ns);
  EXPECT_EQ(TimeAtNs(520 * kMs - 1), std::nullopt);
  EXPECT_EQ(TimeAtNs(720 * kMs), std::nullopt);
}

TEST_F(ClockAnchorTest, IsTheClockForASecondAtMost) {
  Measure(520 * kMs);
  rate.Renew(anchor, SampleAt(720 * kMs));
  EXPECT_EQ(TimeAtNs(1720 * kMs - 1), 1720 * kMs - 1);
  EXPECT_EQ(TimeAtNs(1720 * kMs), std::nullopt);
}

TEST_F(ClockAnchorTest, IsRenewedAfterTenMilliseconds) {
  EXPECT_TRUE(rate.IsDue(1));
  Measure(520 * kMs);
  EXPECT_FALSE(rate.IsDue(530 * kMs - 1));
  EXPECT_TRUE(rate.IsDue(530 * kMs));
}

TEST_F(ClockAnchorTest, LosesWhatItWasAheadOverTheNextWindow) {
  Measure(520 * kMs);
  const ClockSample behind{TicksAt(620 * kMs), 620 * kMs - 50 * kUs};
  EXPECT_EQ(rate.Renew(anchor, behind), 620 * kMs);
  EXPECT_EQ(TimeAt(anchor, behind.ticks), 620 * kMs);

  // As fast as it was between the samples.
  const std::int64_t stretchNs = 100 * kMs - 50 * kUs;
  const std::int64_t endNs = behind.ns + 10 * stretchNs;
  const std::uint64_t endTicks = behind.ticks + 10 * TicksAt(100 * kMs);
  const std::optional<std::int64_t> end = TimeAt(anchor, endTicks);
  ASSERT_TRUE(end);
  EXPECT_NEAR(static_cast<double>(*end), static_cast<double>(endNs), 1.0 * kUs);
}

TEST_F(ClockAnchorTest, DoesNotGoBackAfterAStretchThatIsTooShortToLoseThatIn) {
  Measure(520 * kMs);
  const ClockSample behind{TicksAt(620 * kMs), 620 * kMs - 50 * kUs};
  rate.Renew(anchor, behind);
  const ClockSample next{behind.ticks + TicksAt(kUs), behind.ns + kUs};
  const std::int64_t latestNs = rate.Renew(anchor, next);
  EXPECT_GE(latestNs, 620 * kMs);
  EXPECT_EQ(TimeAt(anchor, next.ticks), std::nullopt);
  EXPECT_EQ(rate.Renew(anchor, {next.ticks + TicksAt(kUs), next.ns + kUs}), latestNs);
}

TEST_F(ClockAnchorTest, MeasuresACounterAgainThatWasSetBack) {
  Measure(520 * kMs);
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(1 * kMs), 540 * kMs}), 540 * kMs);
  EXPECT_EQ(TimeAtNs(1 * kMs), std::nullopt);
  EXPECT_EQ(TimeAtNs(540 * kMs), std::nullopt);
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(21 * kMs), 560 * kMs}), 560 * kMs);
  EXPECT_EQ(TimeAtNs(31 * kMs), 570 * kMs);
}

TEST_F(ClockAnchorTest, MeasuresACounterAgainWhoseRateChanged) {
  Measure(520 * kMs);
  // The clock went on while the counter did not, as while the machine was suspended, and the other way round.
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(540 * kMs), 9000 * kMs}), 9000 * kMs);
  EXPECT_EQ(TimeAtNs(540 * kMs), std::nullopt);
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(560 * kMs), 9020 * kMs}), 9020 * kMs);
  EXPECT_EQ(TimeAtNs(570 * kMs), 9030 * kMs);
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(8000 * kMs), 9040 * kMs}), 9040 * kMs);
  EXPECT_EQ(TimeAtNs(8000 * kMs), std::nullopt);
}

TEST_F(ClockAnchorTest, MeasuresACounterAgainThatStoodStill) {
  rate.Renew(anchor, SampleAt(500 * kMs));
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(500 * kMs), 520 * kMs}), 520 * kMs);
  EXPECT_EQ(TimeAtNs(500 * kMs), std::nullopt);
  EXPECT_EQ(rate.Renew(anchor, {TicksAt(520 * kMs), 540 * kMs}), 540 * kMs);
  EXPECT_EQ(TimeAtNs(530 * kMs), 550 * kMs);
}

// Looks at a clock and a counter of one tick a nanosecond, which go on by a microsecond with each look, and
// by `interruptions` before the looks at the clock of each try.
std::optional<ClockSample> SampleWith(const std::vector<std::array<std::int64_t, 2>>& interruptions) {
  std::int64_t ns = 500 * kMs;
  std::size_t looks = 0;
  return TakeSample([&] { return static_cast<std::uint64_t>(ns); },
                    [&] {
                      ns += interruptions.at(looks / 2).at(looks % 2);
                      ++looks;
                      return ns += kUs;
                    });
}

TEST(ClockSampleOf, SeveralLooksIsTheNarrowestOne) {
  const auto sample = SampleWith({{0, 4 * kMs}, {7 * kMs, 0}, {0, 300 * kUs}});
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->ticks, static_cast<std::uint64_t>(511 * kMs + 3 * kUs));
  // In the middle between the looks at the clock, of which the counter's is as late as the first.
  EXPECT_EQ(static_cast<std::uint64_t>(sample->ns), sample->ticks + kUs / 2);
}

TEST(ClockSampleOf, EquallyNarrowLooksIsTheFirstOne) {
  const auto sample = SampleWith({{0, 0}, {0, 0}, {0, 0}});
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->ticks, static_cast<std::uint64_t>(500 * kMs + kUs));
}

// The looks of a try are a microsecond apart at least.
TEST(ClockSampleOf, LooksIsNoneBeyondTwoMicroseconds) {
  EXPECT_TRUE(SampleWith({{0, kMs}, {0, kMs}, {0, kUs}}));
  EXPECT_EQ(SampleWith({{0, kMs}, {0, kMs}, {0, kUs + 1}}), std::nullopt);
}

TEST(ClockSampleOf, LooksThatWereAllInterruptedIsNone) {
  EXPECT_EQ(SampleWith({{0, 4 * kMs}, {0, 3 * kUs}, {0, kMs}}), std::nullopt);
}

TEST_F(ClockAnchorTest, IsOfOneVersionForReadersBesideARenewal) {
  constexpr std::int64_t kLast = 20'000;
  Measure(20 * kMs);
  std::atomic<std::int64_t> nowNs{20 * kMs};
  std::thread readers[2];
  for (std::thread& reader : readers) {
    reader = std::thread([&] {
      std::int64_t ns = 0;
      while (ns != kLast * kMs) {
        ns = nowNs.load();
        if (const auto time = TimeAtNs(ns)) {
          ASSERT_EQ(*time, ns);
        }
      }
      EXPECT_EQ(TimeAtNs(ns), ns);
    });
  }
  for (std::int64_t ms = 21; ms <= kLast; ++ms) {
    rate.Renew(anchor, SampleAt(ms * kMs));
    nowNs = ms * kMs;
  }
  for (std::thread& reader : readers) reader.join();
}

}  // namespace
}  // namespace kalStore::internal
