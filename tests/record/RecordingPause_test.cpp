// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingPause.h"

#include <gtest/gtest.h>

namespace kalStore::internal {
namespace {

using std::chrono::milliseconds;

TEST(RecordingPause, IsTheTimeInWhichAQuarterOfTheRingBecomesNew) {
  EXPECT_EQ(PauseAfter(milliseconds(20), 8192, 16384), milliseconds(10));
  EXPECT_EQ(PauseAfter(milliseconds(100), 80, 64), milliseconds(20));
}

TEST(RecordingPause, IsWithinItsLimits) {
  EXPECT_EQ(PauseAfter(milliseconds(100), 0, 16384), kMostPause);
  EXPECT_EQ(PauseAfter(milliseconds(100), 100, 16384), kMostPause);
  EXPECT_EQ(PauseAfter(milliseconds(100), 100, 1), kLeastPause);
  EXPECT_EQ(PauseAfter(milliseconds(0), 100, 16384), kLeastPause);
  EXPECT_EQ(PauseAfter(milliseconds(0), 0, 16384), kLeastPause);
}

}  // namespace
}  // namespace kalStore::internal
