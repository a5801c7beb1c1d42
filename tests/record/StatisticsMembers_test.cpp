// SPDX-License-Identifier: Apache-2.0
#include "tessel/statistics_members.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "tessel/StatisticsBlocks.h"

namespace kalStore {
namespace {

// The names of a section in their order, those with a unit with it; "name[]" for an array.
std::string NamesOf(const StatisticsSection& section) {
  std::string names, last;
  for (const StatisticsMember& member : *section.members) {
    const std::string name = member.name.substr(0, member.name.find('['));
    const bool isElement = name != member.name;
    if (isElement && name == last) continue;
    last = name;
    names += name + (isElement ? "[]" : "") +
             (*member.unit == '\0' ? "" : std::string("(") + member.unit + ")") + ' ';
  }
  return names;
}

// Prints every member that is neither 0 nor "".
std::string ShownOf(const StatisticsKind& kind, const void* block) {
  std::string shown;
  for (const StatisticsSection& section : kind.sections) {
    for (const StatisticsMember& member : *section.members) {
      const std::string text = member.shown(static_cast<const char*>(block) + section.offset + member.offset);
      if (text != "0" && !text.empty()) shown += section.title + "." + member.name + "=" + text + " ";
    }
  }
  return shown;
}

TEST(StatisticsMembers, AreThoseOfTheirBlockInTheOrderInWhichTheyAreShown) {
  const StatisticsKind& video = StatisticsKinds()[0];
  const StatisticsKind& audio = StatisticsKinds()[1];
  EXPECT_STREQ(video.name, "video");
  EXPECT_STREQ(audio.name, "audio");
  ASSERT_EQ(video.sections.size(), 1u + kVideoLayerCount);
  ASSERT_EQ(audio.sections.size(), 3u);
  EXPECT_EQ(video.sections[0].title, "call");
  EXPECT_FALSE(video.sections[0].isLayer);
  EXPECT_EQ(
      NamesOf(video.sections[0]),
      "activeStreams codecCode encodedWidth(px) encodedHeight(px) encoderFps(fps) encoderBitrate(bit/s) "
      "encoderBitrate2(bit/s) hardwareEncoder downType frameSize frameSize2 capturedFrames(frames) "
      "framesFedToEncoder(frames) encodedFrames(frames) idrRequests(frames) idrSent(frames) "
      "performanceWarnings noiseLevel roiAreaRatio process1 process2 other1 other2 other3 other5 other6 "
      "other7 av1Metric av1Name1 av1Name2 ");
  for (std::size_t i = 1; i < video.sections.size(); ++i) {
    EXPECT_EQ(video.sections[i].title, "layer" + std::to_string(i - 1));
    EXPECT_TRUE(video.sections[i].isLayer);
    EXPECT_EQ(
        NamesOf(video.sections[i]),
        "streamWords[] codecCode counter counterDelta idrRequests(frames) idrRequestsDelta(frames) "
        "idrSent(frames) idrReasons[](frames) configChanges profile targetFps(fps) bufferOccupancy "
        "interval32 interval36 intervalMinimum intervalMaximum intervalLast stat40 stat44 stat48 stat56 "
        "stat60 stats108[] stat124 stat128 ");
  }
  const char* const titles[] = {"both", "sent", "received"};
  const char* const names[] = {
      "lbrrFlag stat4 bitrate(bit/s) codecCode stat112 ",
      "codecStat0 encodeDropMs(ms) noiseLevel[](dB) aecLevel[](dB) speechLevel[](dB) codecStat16 codecStat24 "
      "unstableEvents ",
      "jitterBytes.jitter1 jitterBytes.jitter2 jitterStat8 jitterStat12 jitterStat16 jitterStat40 "
      "jitterStat48 e2eDelay[](ms) "};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(audio.sections[i].title, titles[i]);
    EXPECT_FALSE(audio.sections[i].isLayer);
    EXPECT_EQ(NamesOf(audio.sections[i]), names[i]);
  }
}

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
  st_KalVideoTxBlock video{};
  video.layer[2].targetFps = 15;
  video.layer[5].idrReasons[10] = 3;
  video.capturedFrames = std::uint64_t{1} << 40;
  video.performanceWarnings = -1;
  video.downType = static_cast<kal::KalVideoResDownType>(2);
  std::memset(video.av1Name1, 'a', sizeof video.av1Name1);  // No NUL ends it.
  std::strcpy(video.av1Name2, "fast");
  EXPECT_EQ(ShownOf(StatisticsKinds()[0], &video),
            "call.downType=2 call.capturedFrames=1099511627776 call.performanceWarnings=-1 "
            "call.av1Name1=aaaaaaaaaaaaaaaa call.av1Name2=fast layer2.targetFps=15 layer5.idrReasons[10]=3 ");

  st_KalAudioBlock audio{};
  audio.bitrate = 32000;
  audio.aecLevel[1] = -2.5F;
  audio.codecStat16 = {2, 1};
  audio.e2eDelay[2] = 90;
  EXPECT_EQ(ShownOf(StatisticsKinds()[1], &audio),
            "both.bitrate=32000 sent.aecLevel[1]=-2.5 sent.codecStat16=4294967298 received.e2eDelay[2]=90 ");
}

TEST(StatisticsMembers, AreTextWhereTheyAreStrings) {
  for (const StatisticsSection& section : StatisticsKinds()[0].sections) {
    for (const StatisticsMember& member : *section.members) {
      EXPECT_EQ(member.isText, member.name.starts_with("av1Name")) << member.name;
    }
  }
}

}  // namespace
}  // namespace kalStore
