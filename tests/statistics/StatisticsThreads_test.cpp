// What many threads do at once to the same objects, without a lock of their own. Run under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tessel/CKalTessel.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"

namespace {

using kalStore::st_KalAudioBlock;
using kalStore::st_KalVideoStreamStatInfo;
using kalStore::st_KalVideoTxBlock;

constexpr std::uint32_t kRounds = 2000;

// Runs every job `kRounds` times, each on a thread of its own, all at once.
void RunAtOnce(const std::vector<std::function<void(std::uint32_t)>>& jobs) {
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (const auto& job : jobs) {
    threads.emplace_back([&go, &job] {
      while (!go) std::this_thread::yield();
      for (std::uint32_t round = 1; round <= kRounds; ++round) job(round);
    });
  }
  go = true;
  for (std::thread& thread : threads) thread.join();
}

TEST(StatisticsThreads, WriteDifferentAndTheSameVideoMembersBesideReaders) {
  KalVideoStatisticInfo info(1);
  const auto encoder = [&](std::uint32_t round) {
    st_KalVideoStreamStatInfo streams[6]{};
    for (auto& stream : streams) {
      stream.stat48 = stream.stat56 = round;
      stream.stat300 = stream.stat304 = static_cast<std::int32_t>(round);
    }
    info.UpdateStreamsInfo(streams, 6);
    info.UpdateOneVideoLayerInfo(streams, static_cast<std::int32_t>(round % 6), round % 64 == 0, round);
    info.UpdateVideoConfigureChange(streams, 6);
    info.UpdateVideoEncIdrReqNum(round, streams, 6, true);
    info.UpdateVideoEncIdrSentAndReasonCnt(round, streams, 2);
    info.UpdateNoiseLevel(static_cast<std::int32_t>(round));
    info.UpdateAV1Metrics(1, round % 2 == 0 ? "a" : "a longer name", "profile");
  };
  const auto sender = [&](std::uint32_t round) {
    float values[6]{};
    std::uint32_t profiles[6]{};
    info.UpdateVideoEncBitrateFps(round, round, 30);
    info.UpdateVideoEncResolution(round);
    info.UpdateVideoEnableHWEnc(true);
    info.UpdateVideoCapturedFrameCnt(round);
    info.UpdateVideoEncOtherInfo(1, 2, 3, kal::KAL_VIDEO_CODEC_CODE_100, 5, 6, 7);
    info.UpdateEncodeControlTargetFps(values, 6);
    info.UpdateFBufferOcuppiedVideo(values, 3);
    info.UpdateProfile(profiles, 6);
    if (round % 256 == 0) info.reset(round);
    if (round % 256 == 128) info.resetTxVideoStatisticInfo();
  };
  const auto reader = [&](std::uint32_t round) {
    st_KalVideoTxBlock block;
    EXPECT_EQ(info.GetTxMediaInfo(&block, round % 2 == 0), 0);
    EXPECT_LE(std::string(block.av1Name1).size(), 15U);
    EXPECT_LE(block.encodedFrames, kRounds);
    if (round % 128 == 0) info.UpdateTxMediaInfo(&block);
    info.GetCallId();
  };
  RunAtOnce({encoder, encoder, sender, sender, reader, reader});
}

TEST(StatisticsThreads, WriteDifferentAndTheSameAudioMembersBesideReaders) {
  KalAudioStatisticInfo info(1);
  const auto sender = [&](std::uint32_t round) {
    kalStore::st_KalAudioCodecStatisticsInfo codec{};
    info.updateSendCodecInfo(codec);
    info.updateCodecStaticsLBRRflag(round % 2 == 0);
    info.updateTxBitRate(round);
    info.updateNoiseLevel(1, 2, 3);
    info.updateAECLevel(1, 2, 3);
    info.updateSpeechLevel(1, 2, 3);
    info.updateTxEncodeDropFrameinMS(round);
    info.updateUnstableEventCount(round);
    if (round % 256 == 0) info.reset(round);
  };
  const auto receiver = [&](std::uint32_t round) {
    kalStore::st_KalAudioJitterBufferStatistics jitter{};
    kal::_tagSyncStatistics sync{};
    info.updateRxBitRate(19, round);
    info.updatePayloadType(19, kalStore::KAL_AUDIO_PAYLOAD_PCMU);
    info.updateDecodeInfo(19, true, round);
    info.updateCodecStaticsLBRRflag(19, false);
    info.updateJitterBufferStatistics(19, jitter, 1, 2);
    info.updateE2EDelayInfo(19, 1, 2, 3);
    info.updateAVSyncStatistics(19, sync);
  };
  const auto reader = [&](std::uint32_t round) {
    st_KalAudioBlock block;
    kal::_tagSyncStatistics sync;
    EXPECT_EQ(info.GetTxMediaInfo(&block, round % 2 == 0), 0);
    EXPECT_LE(block.bitrate, kRounds);
    EXPECT_EQ(info.GetRxAudioInfo(&block, 19, round % 2 == 0), 0);
    EXPECT_LE(block.bitrate, kRounds);
    EXPECT_EQ(info.GetAVSyncInfo(&sync, 19), 0);
  };
  RunAtOnce({sender, sender, receiver, receiver, reader, reader});
}

TEST(StatisticsThreads, LoseNoMaximumAndNoMinimum) {
  KalVideoStatisticInfo info(1);
  std::vector<std::function<void(std::uint32_t)>> jobs;
  for (std::uint32_t thread = 0; thread < 4; ++thread) {
    jobs.emplace_back([&info, thread](std::uint32_t round) {
      const auto value = static_cast<std::int32_t>(round * 4 + thread);
      st_KalVideoStreamStatInfo stream{};
      stream.stat300 = 100000 - value;
      stream.stat304 = value;
      info.UpdateStreamsInfo(&stream, 1);
      info.UpdateNoiseLevel(value);
    });
  }
  RunAtOnce(jobs);
  st_KalVideoTxBlock block;
  info.GetTxMediaInfo(&block, false);
  EXPECT_EQ(block.noiseLevel, static_cast<std::int32_t>(kRounds * 4 + 3));
  EXPECT_EQ(block.layer[0].intervalMaximum, static_cast<std::int32_t>(kRounds * 4 + 3));
  EXPECT_EQ(block.layer[0].intervalMinimum, 100000 - static_cast<std::int32_t>(kRounds * 4 + 3));
}

// The growths that a reader is told add up to the counter, however the writer runs beside it.
TEST(StatisticsThreads, CountEveryUpdateInExactlyOneReport) {
  KalVideoStatisticInfo info(1);
  std::uint32_t reported = 0;
  const auto report = [&](std::uint32_t) {
    st_KalVideoTxBlock block;
    info.GetTxMediaInfo(&block, true);
    if (block.activeStreams == 1) reported += block.layer[0].counterDelta;
  };
  const auto writer = [&](std::uint32_t round) {
    st_KalVideoStreamStatInfo stream{};
    stream.counter = round;
    info.UpdateStreamsInfo(&stream, 1);
    info.UpdateOneVideoLayerInfo(&stream, 0, false, round);
  };
  RunAtOnce({writer, report});
  report(0);
  EXPECT_EQ(reported, kRounds);
}

TEST(StatisticsThreads, CreateShareAndReleaseTheSameKeys) {
  const auto job = [](std::uint32_t round) {
    const auto type = static_cast<kalStore::KalTesselEntityType>(round % 4);
    void* entity = nullptr;
    ASSERT_EQ(createTesselEntity(type, 3, &entity), 0);
    if (type == kalStore::KAL_TESSEL_VIDEO || type == kalStore::KAL_TESSEL_CONTENT_VIDEO) {
      auto* info = static_cast<KalVideoStatisticInfo*>(static_cast<kalStore::IKalVideoInfo*>(entity));
      info->UpdateVideoEncFrameCnt(round);
      info->AddRef();
      EXPECT_GE(info->Release(), 1U);
    } else {
      static_cast<kalStore::IKalAudioInfo*>(entity)->updateTxBitRate(round);
    }
    EXPECT_GE(releaseTesselEntity(type, 3, entity), 0);
  };
  RunAtOnce({job, job, job, job});
  for (int type = 0; type < 4; ++type) {
    EXPECT_FALSE(kalStore::kalTesselInstant.isTesselEntityExisted(
        static_cast<kalStore::KalTesselEntityType>(type), 3));
  }
}

}  // namespace
