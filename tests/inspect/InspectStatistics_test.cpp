// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "InspectTest.h"

namespace kalStore {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(InspectStatisticsTest, GivesTheObjectsByTypeAndCallWithTheirReferences) {
  EXPECT_THAT(InspectStatistics(), IsEmpty());
  const StatsRef<VideoStats> video(8);
  const StatsRef<ContentAudioStats> content(7);
  const StatsRef<VideoStats> first(7);
  const StatsRef<VideoStats> second(7);
  const std::vector<InspectedStatistics> found = InspectStatistics();
  ASSERT_THAT(found, SizeIs(3));
  EXPECT_EQ(found[0].type, KAL_TESSEL_VIDEO);
  EXPECT_EQ(found[0].callId, 7u);
  EXPECT_EQ(found[0].references, 2u);
  EXPECT_EQ(found[1].type, KAL_TESSEL_VIDEO);
  EXPECT_EQ(found[1].callId, 8u);
  EXPECT_EQ(found[1].references, 1u);
  EXPECT_EQ(found[2].type, KAL_TESSEL_CONTENT_AUDIO);
  EXPECT_EQ(found[2].callId, 7u);
}

TEST(InspectStatisticsTest, ReadsAVideoObjectAndEndsNoInterval) {
  const StatsRef<VideoStats> video(7);
  video->UpdateNoiseLevel(5);
  video->UpdateVideoCapturedFrameCnt(250);
  st_KalVideoTxBlock sent;
  ASSERT_EQ(InspectVideo(KAL_TESSEL_VIDEO, 7, sent), kResultOk);
  EXPECT_EQ(sent.capturedFrames, 250u);
  EXPECT_EQ(sent.noiseLevel, 5);
  st_KalVideoTxBlock read;
  video->GetTxMediaInfo(&read, true);
  EXPECT_EQ(std::memcmp(&sent, &read, sizeof read), 0);
}

TEST(InspectStatisticsTest, ReadsAllStreamsOfAnAudioObjectAndEndsNoInterval) {
  const StatsRef<ContentAudioStats> audio(7);
  audio->updateTxBitRate(32000);
  audio->updateSpeechLevel(-30, -35, -28);
  audio->updateRxBitRate(0, 24000);
  audio->updateRxBitRate(19, 16000);
  st_KalAudioJitterBufferStatistics jitter{};
  jitter.stat12 = 9;
  audio->updateJitterBufferStatistics(19, jitter, 1, 2);
  kal::_tagSyncStatistics sync{};
  sync.value[29] = 7;
  audio->updateAVSyncStatistics(3, sync);

  InspectedAudio found;
  ASSERT_EQ(InspectAudio(KAL_TESSEL_CONTENT_AUDIO, 7, found), kResultOk);
  EXPECT_EQ(found.sent.bitrate, 32000u);
  EXPECT_EQ(found.received[0].bitrate, 24000u);
  EXPECT_EQ(found.avSync[3].value[29], 7u);
  st_KalAudioBlock read;
  audio->GetTxMediaInfo(&read, true);
  EXPECT_EQ(std::memcmp(&found.sent, &read, sizeof read), 0);
  audio->GetRxAudioInfo(&read, 19, true);
  EXPECT_EQ(std::memcmp(&found.received[19], &read, sizeof read), 0);
}

TEST(InspectStatisticsTest, FindsNothingUnderAnotherKeyAndCopiesNothing) {
  const StatsRef<VideoStats> video(7);
  const StatsRef<AudioStats> audio(7);
  st_KalVideoTxBlock sent{};
  sent.capturedFrames = 1;
  InspectedAudio found;
  found.sent.bitrate = 2;
  EXPECT_EQ(InspectVideo(KAL_TESSEL_VIDEO, 8, sent), kResultNotFound);
  EXPECT_EQ(InspectVideo(KAL_TESSEL_CONTENT_VIDEO, 7, sent), kResultNotFound);
  EXPECT_EQ(InspectVideo(KAL_TESSEL_AUDIO, 7, sent), kResultNotFound);
  EXPECT_EQ(InspectAudio(KAL_TESSEL_CONTENT_AUDIO, 7, found), kResultNotFound);
  EXPECT_EQ(InspectAudio(KAL_TESSEL_VIDEO, 7, found), kResultNotFound);
  EXPECT_EQ(InspectAudio(static_cast<KalTesselEntityType>(9), 7, found), kResultNotFound);
  EXPECT_EQ(sent.capturedFrames, 1u);
  EXPECT_EQ(found.sent.bitrate, 2u);
}

TEST(InspectStatisticsTest, KnowsAnObjectByTheIdThatItWasMadeWith) {
  const StatsRef<VideoStats> video(7);
  video->reset(9);
  EXPECT_EQ(InspectStatistics().at(0).callId, 7u);
  st_KalVideoTxBlock sent;
  EXPECT_EQ(InspectVideo(KAL_TESSEL_VIDEO, 7, sent), kResultOk);
}

}  // namespace
}  // namespace kalStore
