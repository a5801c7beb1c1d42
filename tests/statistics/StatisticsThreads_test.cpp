// SPDX-License-Identifier: Apache-2.0
// Many threads use the same objects at once, without a lock of their own. Run under ThreadSanitizer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
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

// The growths in the reports of two readers add up to the counters, however the writer runs beside them.
TEST(StatisticsThreads, CountEveryUpdateInExactlyOneReport) {
  KalVideoStatisticInfo info(1);
  constexpr int kCounters = 14;
  std::atomic<std::uint32_t> reported[kCounters]{};
  const auto report = [&](std::uint32_t) {
    st_KalVideoTxBlock block;
    info.GetTxMediaInfo(&block, true);
    if (block.activeStreams != 1) return;
    const auto& layer = block.layer[0];
    reported[0] += layer.counterDelta;
    reported[1] += layer.idrRequestsDelta;
    reported[2] += layer.configChanges;
    for (int i = 0; i < 11; ++i) reported[3 + i] += layer.idrReasons[i];
    EXPECT_LE(layer.counterDelta, layer.counter);
    EXPECT_LE(layer.idrRequestsDelta, layer.idrRequests);
    EXPECT_LE(layer.configChanges, kRounds);
  };
  const auto writer = [&](std::uint32_t round) {
    st_KalVideoStreamStatInfo stream{};
    stream.counter = stream.idrRequests = stream.configChanges = round;
    for (std::uint32_t& reason : stream.idrReasons) reason = round;
    info.UpdateStreamsInfo(&stream, 1);
    info.UpdateOneVideoLayerInfo(&stream, 0, false, round);
    info.UpdateVideoConfigureChange(&stream, 1);
    info.UpdateVideoEncIdrSentAndReasonCnt(round, &stream, 0);
  };
  RunAtOnce({writer, report, report});
  report(0);
  for (const auto& sum : reported) EXPECT_EQ(sum, kRounds);
}

// Values of which each must be in exactly one report. A writer waits after each value until two reads have
// begun and ended: one of them, or the one under way at the write, reports it.
class ReportedOnce {
 public:
  static constexpr std::int32_t kValues = 500;

  // Runs each writer with the values from 1 upwards, all at once, and `report` in a loop beside them.
  void Run(const std::vector<std::function<void(std::int32_t)>>& writers,
           const std::function<void(ReportedOnce&)>& report) {
    m_times = std::vector<std::vector<int>>(writers.size(), std::vector<int>(kValues + 1));
    std::atomic<std::size_t> writing{writers.size()};
    std::vector<std::thread> threads;
    for (const auto& writer : writers) {
      threads.emplace_back([&] {
        for (std::int32_t value = 1; value <= kValues; ++value) {
          writer(value);
          for (const int after = m_reads + 2; m_reads < after;) std::this_thread::yield();
        }
        --writing;
      });
    }
    while (writing != 0) {
      report(*this);
      ++m_reads;
      std::this_thread::yield();
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t writer = 0; writer < writers.size(); ++writer) {
      for (std::int32_t value = 1; value <= kValues; ++value)
        EXPECT_EQ(m_times[writer][static_cast<std::size_t>(value)], 1)
            << "writer " << writer << ", " << value;
    }
  }

  // What a report says of a writer's member; 0 or less: nothing.
  template <class Value>
  void Seen(std::size_t writer, Value value) {
    if (value > 0) ++m_times[writer][static_cast<std::size_t>(value)];
  }

 private:
  std::vector<std::vector<int>> m_times;
  std::atomic<int> m_reads{0};
};

TEST(StatisticsThreads, ReportEveryVideoExtremeOnce) {
  KalVideoStatisticInfo info(1);
  info.UpdateEncodeParam(4, kal::KAL_VIDEO_CODEC_CODE_100);
  const auto update = [&](std::int32_t layer, std::int32_t least, std::int32_t greatest, std::int32_t last) {
    st_KalVideoStreamStatInfo streams[4]{};
    streams[layer].stat300 = least;
    streams[layer].stat304 = greatest;
    streams[layer].stat308 = static_cast<std::uint32_t>(last);
    info.UpdateOneVideoLayerInfo(streams, layer, false, 0);
  };
  ReportedOnce().Run(
      {[&](auto value) { info.UpdateNoiseLevel(value); }, [&](auto value) { update(1, value, 0, 0); },
       [&](auto value) { update(2, 0, value, 0); }, [&](auto value) { update(3, 0, 0, value); }},
      [&](ReportedOnce& values) {
        st_KalVideoTxBlock block;
        info.GetTxMediaInfo(&block, true);
        values.Seen(0, block.noiseLevel);
        values.Seen(1, block.layer[1].intervalMinimum);
        values.Seen(2, block.layer[2].intervalMaximum);
        values.Seen(3, block.layer[3].intervalLast);
      });
}

TEST(StatisticsThreads, ReportEveryAudioLevelOnce) {
  KalAudioStatisticInfo info(1);
  const auto level = [](std::int32_t value) { return static_cast<float>(value); };
  ReportedOnce().Run({[&](auto value) { info.updateNoiseLevel(level(value), 0, level(value)); },
                      [&](auto value) { info.updateSpeechLevel(0, level(value), 0); },
                      [&](auto value) { info.updateAECLevel(0, level(value), 0); }},
                     [&](ReportedOnce& values) {
                       st_KalAudioBlock block;
                       info.GetTxMediaInfo(&block, true);
                       values.Seen(0, block.noiseLevel[2]);
                       values.Seen(1, block.speechLevel[1]);
                       values.Seen(2, block.aecLevel[1]);
                     });
}

TEST(StatisticsThreads, ReportEveryJitterStatisticOnce) {
  KalAudioStatisticInfo info(1);
  const auto update = [&](std::int32_t stream, std::int32_t value) {
    kalStore::st_KalAudioJitterBufferStatistics jitter{};
    const auto number = static_cast<std::uint32_t>(value);
    (stream == 0 ? jitter.stat8 : stream == 1 ? jitter.stat12 : jitter.stat16) = number;
    info.updateJitterBufferStatistics(stream, jitter, 0, 0);
  };
  ReportedOnce().Run({[&](auto value) { update(0, value); }, [&](auto value) { update(1, value); },
                      [&](auto value) { update(2, value); }},
                     [&](ReportedOnce& values) {
                       st_KalAudioBlock blocks[3];
                       for (std::int32_t stream = 0; stream < 3; ++stream)
                         info.GetRxAudioInfo(&blocks[stream], stream, true);
                       values.Seen(0, blocks[0].jitterStat8);
                       values.Seen(1, blocks[1].jitterStat12);
                       values.Seen(2, blocks[2].jitterStat16);
                     });
}

// The extreme of all that several threads wrote to one member is the extreme of all reports.
TEST(StatisticsThreads, LoseNoExtremeOfSeveralWriters) {
  for (const bool isRead : {false, true}) {
    SCOPED_TRACE(isRead ? "beside a reader" : "before one report");
    KalVideoStatisticInfo info(1);
    std::int32_t noise = -1;
    std::int32_t least = INT32_MAX;
    std::int32_t greatest = 0;
    const auto report = [&](std::uint32_t) {
      st_KalVideoTxBlock block;
      info.GetTxMediaInfo(&block, true);
      noise = std::max(noise, block.noiseLevel);
      greatest = std::max(greatest, block.layer[0].intervalMaximum);
      if (block.layer[0].intervalMinimum > 0) least = std::min(least, block.layer[0].intervalMinimum);
    };
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
    if (isRead) jobs.emplace_back(report);
    RunAtOnce(jobs);
    report(0);
    const auto last = static_cast<std::int32_t>(kRounds * 4 + 3);
    EXPECT_EQ(noise, last);
    EXPECT_EQ(greatest, last);
    EXPECT_EQ(least, 100000 - last);
  }
}

// A read beside a reset finds what was before or what begins, never zeroes in between.
TEST(StatisticsThreads, NeverShowAHalfDoneReset) {
  KalVideoStatisticInfo video(1);
  KalAudioStatisticInfo audio(1);
  const auto reset = [&](std::uint32_t round) {
    video.reset(round);
    audio.reset(round);
  };
  const auto read = [&](std::uint32_t) {
    st_KalVideoTxBlock videoBlock;
    video.GetTxMediaInfo(&videoBlock, false);
    EXPECT_EQ(videoBlock.noiseLevel, -1);
    st_KalAudioBlock audioBlock;
    audio.GetTxMediaInfo(&audioBlock, false);
    EXPECT_EQ(audioBlock.speechLevel[2], -100);
    EXPECT_EQ(audioBlock.stat112, 20U);
  };
  RunAtOnce({reset, read});
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

// However the last reference is released, requests beside it get an object that lives.
TEST(StatisticsThreads, EndByTheirOwnReleaseBesideRequests) {
  kalStore::CKalTessel registry;
  constexpr auto kType = kalStore::KAL_TESSEL_VIDEO;
  const auto request = [&](std::uint32_t round) {
    void* const entity = registry.createOrGetTesselEntity(kType, 3);
    auto* const info = static_cast<KalVideoStatisticInfo*>(static_cast<kalStore::IKalVideoInfo*>(entity));
    info->UpdateVideoEncFrameCnt(round);
    EXPECT_GE(info->GetReference(), 1U);
    return info;
  };
  const auto byObject = [&](std::uint32_t round) { request(round)->Release(); };
  const auto byBoth = [&](std::uint32_t round) {
    auto* const info = request(round);
    info->AddRef();
    EXPECT_GE(registry.releaseTesselEntity(kType, 3, info), 1);
    info->UpdateVideoEncFrameCnt(round);
    info->Release();
  };
  const auto byRegistry = [&](std::uint32_t round) {
    EXPECT_GE(registry.releaseTesselEntity(kType, 3, request(round)), 0);
    registry.isTesselEntityExisted(kType, 3);
  };
  RunAtOnce({byObject, byBoth, byRegistry, byObject, byBoth});
  EXPECT_FALSE(registry.isTesselEntityExisted(kType, 3));
}

TEST(StatisticsThreads, MayEndWhileTheirRegistryEnds) {
  constexpr std::uint32_t kCalls = 4;
  for (int repetition = 0; repetition < 200; ++repetition) {
    auto registry = std::make_unique<kalStore::CKalTessel>();
    std::atomic<bool> go{false};
    std::vector<std::thread> holders;
    for (std::uint32_t callId = 0; callId < kCalls; ++callId) {
      void* const entity = registry->createOrGetTesselEntity(kalStore::KAL_TESSEL_AUDIO, callId);
      holders.emplace_back([&go, entity] {
        while (!go) std::this_thread::yield();
        auto* const info = static_cast<KalAudioStatisticInfo*>(static_cast<kalStore::IKalAudioInfo*>(entity));
        EXPECT_EQ(info->Release(), 0U);
      });
    }
    go = true;
    registry.reset();
    for (std::thread& holder : holders) holder.join();
  }
}

}  // namespace
