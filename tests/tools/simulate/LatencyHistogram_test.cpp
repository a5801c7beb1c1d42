// SPDX-License-Identifier: Apache-2.0
#include "simulate/LatencyHistogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

using simulate::LatencyHistogram;

TEST(LatencyHistogram, HasNothingBeforeAnythingIsAdded) {
  const LatencyHistogram histogram;
  EXPECT_EQ(histogram.Count(), 0U);
  EXPECT_EQ(histogram.Quantile(0.5), 0);
  EXPECT_EQ(histogram.Greatest(), 0);
}

TEST(LatencyHistogram, KeepsSmallDurationsExactly) {
  LatencyHistogram histogram;
  for (int duration = 1; duration <= 60; ++duration) histogram.Add(duration);
  EXPECT_EQ(histogram.Count(), 60U);
  EXPECT_EQ(histogram.Quantile(0), 1);
  EXPECT_EQ(histogram.Quantile(0.5), 31);
  EXPECT_EQ(histogram.Quantile(1), 60);
}

TEST(LatencyHistogram, TakesEveryDuration) {
  for (const std::int64_t duration :
       {std::int64_t{0}, std::int64_t{63}, std::int64_t{64}, std::int64_t{65}, (std::int64_t{1} << 40) - 1,
        std::int64_t{1} << 40, std::numeric_limits<std::int64_t>::max()}) {
    LatencyHistogram histogram;
    histogram.Add(duration);
    EXPECT_EQ(histogram.Greatest(), duration);
    EXPECT_EQ(histogram.Quantile(0.5), duration);
  }
  LatencyHistogram histogram;
  histogram.Add(-5);  // A clock that went back.
  EXPECT_EQ(histogram.Greatest(), 0);
}

TEST(LatencyHistogram, GivesQuantilesToAThirtySecondOfTheirValue) {
  constexpr unsigned kSeed = 7;
  std::mt19937_64 random(kSeed);
  LatencyHistogram histogram;
  std::vector<std::int64_t> all;
  for (int i = 0; i < 20000; ++i) {
    const auto duration = static_cast<std::int64_t>(random() >> (30 + random() % 30));
    all.push_back(duration);
    histogram.Add(duration);
  }
  std::sort(all.begin(), all.end());
  for (const double share : {0.01, 0.25, 0.5, 0.9, 0.99}) {
    const auto exact = static_cast<double>(all[static_cast<std::size_t>(share * 20000)]);
    const auto quantile = static_cast<double>(histogram.Quantile(share));
    EXPECT_GE(quantile, exact) << share;
    EXPECT_LE(quantile, exact * (1 + 1.0 / 32)) << share;
  }
  EXPECT_EQ(histogram.Greatest(), all.back());
}

}  // namespace
