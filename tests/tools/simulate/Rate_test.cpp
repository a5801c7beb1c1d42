// SPDX-License-Identifier: Apache-2.0
#include "simulate/Rate.h"

#include <gtest/gtest.h>

namespace {

TEST(Rate, FadesWithinAQuarterOfASecond) {
  simulate::Rate rate;
  EXPECT_EQ(rate.PerSecond(), 0);
  rate.Add(100, 0.125);
  EXPECT_EQ(rate.PerSecond(), 400);
  rate.Add(100, 0.125);
  EXPECT_EQ(rate.PerSecond(), 600);
  rate.Add(100, 0.5);
  EXPECT_EQ(rate.PerSecond(), 200);
}

TEST(Rate, IsTheSameWhileNoTimePasses) {
  simulate::Rate rate;
  rate.Add(100, 0);
  EXPECT_EQ(rate.PerSecond(), 0);
}

}  // namespace
