// SPDX-License-Identifier: Apache-2.0
#include "tessel/statistics_members.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "tessel/StatisticsBlocks.h"

namespace kalStore {
namespace {

TEST(StatisticsMembers, AreInTheirSectionAndBesideEachOther) {
  ASSERT_EQ(StatisticsKinds().size(), 2u);
  EXPECT_EQ(StatisticsKinds()[0].blockSize, sizeof(st_KalVideoTxBlock));
  EXPECT_EQ(StatisticsKinds()[1].blockSize, sizeof(st_KalAudioBlock));
  for (const StatisticsKind& kind : StatisticsKinds()) {
    for (const StatisticsSection& section : kind.sections) {
      EXPECT_LE(section.offset + section.size, kind.blockSize) << section.title;
      std::set<std::size_t> taken;
      for (const StatisticsMember& member : *section.members) {
        EXPECT_LE(member.offset + member.size, section.size) << member.name;
        for (std::size_t i = 0; i < member.size; ++i) {
          EXPECT_TRUE(taken.insert(member.offset + i).second) << member.name;
        }
      }
    }
  }
}

TEST(StatisticsMembers, ShowTheValueAtTheirPlace) {
  st_KalVideoTxBlock block{};
  block.layer[2].targetFps = 15;
  std::strcpy(block.av1Name1, "fast");
  std::string shown;
  for (const StatisticsSection& section : StatisticsKinds()[0].sections) {
    for (const StatisticsMember& member : *section.members) {
      const std::string text =
          member.shown(reinterpret_cast<const char*>(&block) + section.offset + member.offset);
      if (text != "0" && !text.empty()) shown += section.title + "." + member.name + "=" + text + " ";
    }
  }
  EXPECT_EQ(shown, "call.av1Name1=fast layer2.targetFps=15 ");
}

}  // namespace
}  // namespace kalStore
