// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigGroup.h"

#include <gtest/gtest.h>

#include <limits>

namespace kalStore {
namespace {

constexpr const char* kNames[] = {"Common",       "Feature",    "Metrics",     "Audio",     "AudioSlide",
                                  "Video",        "VideoSlide", "Application", "Gamestate", "AudioSi",
                                  "Transmission", "TAOnly",     "UnitTest"};

TEST(KalConfigGroup, HasThirteenNamesThatReadBothWays) {
  for (int group = 0; group < 13; ++group) {
    EXPECT_EQ(kNames[group], KalConfigGroup2GroupName(static_cast<KalConfigGroup>(group)));
    EXPECT_EQ(group, GroupName2KalConfigGroup(kNames[group]));
    EXPECT_TRUE(IsConfigGroup(static_cast<KalConfigGroup>(group)));
  }
}

TEST(KalConfigGroup, NamesTheCountAndNothingElse) {
  EXPECT_EQ("LastGroup", KalConfigGroup2GroupName(KAL_CONFIG_GROUP_LAST));
  for (const int group :
       {14, 15, 1000, std::numeric_limits<int>::max(), -1, -13, std::numeric_limits<int>::min()}) {
    EXPECT_EQ("Undefined_Group", KalConfigGroup2GroupName(static_cast<KalConfigGroup>(group)));
    EXPECT_FALSE(IsConfigGroup(static_cast<KalConfigGroup>(group)));
  }
}

TEST(KalConfigGroup, GivesTheCountForEveryOtherString) {
  for (const char* name : {"LastGroup", "Undefined_Group", "", "common", "COMMON", "Commo", "Common ",
                           " Common", "Common1", "Audio,Video", "13", "0"}) {
    EXPECT_EQ(KAL_CONFIG_GROUP_LAST, GroupName2KalConfigGroup(name)) << name;
  }
  EXPECT_EQ(KAL_CONFIG_GROUP_LAST, GroupName2KalConfigGroup(std::string("Common\0", 7)));
}

}  // namespace
}  // namespace kalStore
