// SPDX-License-Identifier: Apache-2.0
// What the components of a simulated call make of their settings and of what the link carries.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "simulate/AudioReceiver.h"
#include "simulate/AudioSender.h"
#include "simulate/BandwidthController.h"
#include "simulate/JitterBuffer.h"
#include "simulate/Keys.h"
#include "simulate/VideoReceiver.h"
#include "simulate/VideoSender.h"
#include "tessel/CallStore.h"
#include "tessel/StatsRef.h"

namespace {

using simulate::AudioReceiver;
using simulate::AudioSender;
using simulate::BandwidthController;
using simulate::Component;
using simulate::JitterBuffer;
using simulate::Link;
using simulate::Media;
using simulate::VideoReceiver;
using simulate::VideoSender;

constexpr std::uint32_t kSimulatedCall = 4713;

struct SimulatedComponents : testing::Test {
  template <class Key, class T>
  void Set(const Key& key, T value) {
    key.Set(*store, value);
  }
  // What was set and posted to it has arrived when it works.
  static void Work(Component& component) {
    component.Drain();
    component.Tick();
    component.Drain();
  }
  // Four times as many packets as the link's queue has room for.
  void SendTooMuch(Media media) { link.Send(media, recorder.Now(), 1000, 5e6); }

  kalStore::st_KalAudioBlock SentAudio() const {
    kalStore::st_KalAudioBlock block;
    audioStatistics->GetTxMediaInfo(&block, false);
    return block;
  }
  kalStore::st_KalAudioBlock ReceivedAudio() const {
    kalStore::st_KalAudioBlock block;
    audioStatistics->GetRxAudioInfo(&block, 0, false);
    return block;
  }
  kalStore::st_KalVideoTxBlock SentVideo() const {
    kalStore::st_KalVideoTxBlock block;
    videoStatistics->GetTxMediaInfo(&block, false);
    return block;
  }

  const kalStore::StatsRef<kalStore::AudioStats> audioStatistics{kSimulatedCall};
  const kalStore::StatsRef<kalStore::VideoStats> videoStatistics{kSimulatedCall};
  const kalStore::CallStore store{kSimulatedCall, kalStore::CallStore::kEndsCall};
  simulate::Recorder recorder;
  simulate::Ledger ledger{recorder};
  Link link{1e9, 0};  // It stays good.
  const simulate::CallContext call{kSimulatedCall, recorder, ledger, link};
};

TEST_F(SimulatedComponents, JitterBufferTakesStepsUpAtOnceWithinItsLimits) {
  Set(simulate::kJitterMinDelayMs, 203);
  JitterBuffer buffer(call);
  buffer.Start();
  Work(buffer);
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 205);
  ConfigData playout;
  const auto& key = simulate::kPlayoutDelayMs;
  EXPECT_EQ(store->GetDynamicConfig(key.Group(), key.Name(), playout, {}), kalStore::kResultOk);
  EXPECT_GE(playout.ToDouble(), 203);

  Set(simulate::kJitterMinDelayMs, 100000);
  Work(buffer);
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 10000);
}

TEST_F(SimulatedComponents, JitterBufferReportsItsTargetAndWhatArrivedSinceTheLastTime) {
  Set(simulate::kJitterMinDelayMs, 203);
  JitterBuffer buffer(call);
  buffer.Start();
  SendTooMuch(Media::kAudio);
  const Link::Traffic first = link.Received(Media::kAudio);
  Work(buffer);
  kalStore::st_KalAudioBlock block = ReceivedAudio();
  EXPECT_EQ(block.stat112, 205U);
  EXPECT_EQ(block.jitterBytes.jitter1, std::lround(link.Now(0).jitterMs));
  EXPECT_EQ(block.jitterBytes.jitter2, 41);
  EXPECT_EQ(block.jitterStat8, first.received);
  EXPECT_EQ(block.jitterStat12, first.lost);

  SendTooMuch(Media::kAudio);
  const Link::Traffic all = link.Received(Media::kAudio);
  Work(buffer);
  block = ReceivedAudio();
  EXPECT_EQ(block.jitterStat8, all.received - first.received);
  EXPECT_EQ(block.jitterStat12, all.lost - first.lost);
  EXPECT_EQ(block.jitterStat40.Value(), all.received);
  EXPECT_EQ(block.jitterStat48, all.lost);
  EXPECT_EQ(recorder.statisticsWrites, 2U);
}

TEST_F(SimulatedComponents, AudioSenderPaysForItsRedundancyAndReportsWhatItSent) {
  AudioSender sender(call);
  sender.Start();
  Set(simulate::kAudioTarget, 40000);
  Set(simulate::kExpectedLoss, 25);
  Set(simulate::kAudioFec, true);
  while (link.Received(Media::kAudio).received < 3) Work(sender);
  const Link::Traffic sent = link.Received(Media::kAudio);
  EXPECT_NEAR(sent.bits, sent.received * 50000 * 0.02, 1e-6);
  const kalStore::st_KalAudioBlock block = SentAudio();
  EXPECT_EQ(block.codecStat0, 1U);
  EXPECT_EQ(block.codecCode, 4U);
  EXPECT_EQ(block.codecStat16.Value(), sent.received);
  EXPECT_GT(block.bitrate, 0U);
  EXPECT_GE(block.speechLevel[0], -30);
  EXPECT_LE(block.speechLevel[0], -18);
  EXPECT_EQ(block.speechLevel[1], block.speechLevel[0] - 3);
  EXPECT_EQ(block.speechLevel[2], block.speechLevel[0] - 6);
  EXPECT_EQ(recorder.statisticsWrites, 3 * sender.Ticks());
}

TEST_F(SimulatedComponents, AudioReceiverReportsWhatArrivesAndTheDelayWithThatOfTheBuffer) {
  AudioReceiver receiver(call);
  receiver.Start();
  Set(simulate::kJitterTargetMs, 100);
  Set(simulate::kAudioFec, true);
  SendTooMuch(Media::kAudio);
  Work(receiver);
  const kalStore::st_KalAudioBlock block = ReceivedAudio();
  const auto pathMs = static_cast<std::uint32_t>(link.Now(0).delayMs);
  EXPECT_EQ(block.lbrrFlag, 1);
  EXPECT_EQ(block.codecCode, 4U);
  EXPECT_EQ(block.stat4, link.Received(Media::kAudio).received);
  EXPECT_GT(block.bitrate, 0U);
  EXPECT_EQ(block.e2eDelay[0], pathMs + 100);
  EXPECT_EQ(block.e2eDelay[1], pathMs);
  EXPECT_EQ(block.e2eDelay[2], 100U);
  EXPECT_EQ(recorder.statisticsWrites, 4U);
  Work(receiver);
  EXPECT_LT(ReceivedAudio().bitrate, block.bitrate);
}

TEST_F(SimulatedComponents, VideoReceiverReportsWhatArrivesAndHowLongVideoWaitsForTheVoice) {
  Set(simulate::kJitterMinDelayMs, 203);
  JitterBuffer buffer(call);
  VideoReceiver receiver(call);
  buffer.Start();
  receiver.Start();
  Set(simulate::kTargetFps, 100);
  SendTooMuch(Media::kVideo);
  Work(buffer);
  const double playoutMs = link.Now(0).delayMs + 203;
  Work(receiver);
  const Link::Traffic traffic = link.Received(Media::kVideo);
  const double arrived = static_cast<double>(traffic.received) / (traffic.received + traffic.lost);
  kal::_tagSyncStatistics sync;
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_GT(sync.value[0], 0U);
  EXPECT_NEAR(sync.value[1], 0.2 * arrived * 100 * 100, 1);
  EXPECT_EQ(sync.value[2], traffic.received);
  EXPECT_EQ(sync.value[3], traffic.lost);
  EXPECT_NEAR(sync.value[4], playoutMs - link.Now(0).delayMs, 1);
  EXPECT_EQ(recorder.statisticsWrites, 2U);
  const std::uint32_t bitrate = sync.value[0];
  Work(receiver);
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_LT(sync.value[0], bitrate);
}

TEST_F(SimulatedComponents, VideoSenderReportsEachLayerAndThePicture) {
  Set(simulate::kHardwareEncode, false);
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 200);
  Set(simulate::kVideoTarget, 800000);
  Set(simulate::kActiveLayers, 2);
  while (recorder.framesSent < 3) Work(sender);
  const kalStore::st_KalVideoTxBlock block = SentVideo();
  EXPECT_EQ(block.activeStreams, 2);
  EXPECT_EQ(block.codecCode, 100U);
  EXPECT_EQ(block.encodedWidth, 640U);
  EXPECT_EQ(block.encodedHeight, 360U);
  EXPECT_EQ(block.hardwareEncoder, 0);
  EXPECT_GT(block.encoderFps, 0);
  EXPECT_GT(block.encoderBitrate, 0);
  EXPECT_EQ(block.encoderBitrate2, 800000);
  EXPECT_EQ(block.capturedFrames, recorder.framesSent);
  EXPECT_EQ(block.framesFedToEncoder, recorder.framesSent);
  EXPECT_EQ(block.encodedFrames, recorder.framesSent);
  for (int layer = 0; layer < 2; ++layer) {
    EXPECT_EQ(block.layer[layer].codecCode, 100U);
    EXPECT_EQ(block.layer[layer].counter, recorder.framesSent);
    EXPECT_EQ(block.layer[layer].targetFps, 200);
    EXPECT_EQ(block.layer[layer].intervalMaximum, 500);  // Bytes of a frame.
  }
  EXPECT_EQ(block.layer[2].counter, 0U);
  EXPECT_EQ(block.layer[2].targetFps, 0);
  EXPECT_EQ(recorder.statisticsWrites, 11 * sender.Ticks());
}

TEST_F(SimulatedComponents, VideoSenderSendsAnIdrFrameNowAndThen) {
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, simulate::kMostFps);
  kalStore::st_KalVideoLayer layer{};
  while (layer.idrSent == 0) {
    Work(sender);
    layer = SentVideo().layer[0];
    ASSERT_EQ(layer.idrSent, layer.counter / 90);
    ASSERT_EQ(layer.idrRequests, layer.idrSent);
  }
}

TEST_F(SimulatedComponents, VideoSenderSendsATenthMoreAgainstLosses) {
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 100);
  Set(simulate::kVideoTarget, 960000);  // A packet for each frame.
  while (recorder.framesSent < 3) Work(sender);
  const Link::Traffic plain = link.Received(Media::kVideo);
  EXPECT_EQ(plain.received + plain.lost, recorder.framesSent);
  const auto frames = static_cast<double>(recorder.framesSent);
  Set(simulate::kVideoTarget, 100000);
  Set(simulate::kRetransmissionFec, true);
  while (static_cast<double>(recorder.framesSent) < frames + 3) Work(sender);
  const double bits = link.Received(Media::kVideo).bits - plain.bits;
  EXPECT_NEAR(bits, 1100 * (static_cast<double>(recorder.framesSent) - frames), 1e-3);
}

// By the media clock, which ticks as often as it likes.
TEST_F(SimulatedComponents, SendersSendNoMoreFramesThanTheTimeThatPassedHas) {
  Set(simulate::kAudioFrameMs, 5);
  Set(simulate::kTargetFps, 200);
  AudioSender audio(call);
  VideoSender video(call);
  audio.Start();
  video.Start();
  std::uint32_t packets = 0;
  while (packets < 20 || recorder.framesSent < 20) {
    Work(audio);
    Work(video);
    const Link::Traffic traffic = link.Received(Media::kAudio);
    packets = traffic.received + traffic.lost;
  }
  const double frames = 200 * simulate::Seconds(recorder.Now());
  EXPECT_LE(packets, frames);
  EXPECT_LE(static_cast<double>(recorder.framesSent), frames);
}

struct BandwidthShare {
  int limit, bandwidth, audio, video, fps, layers;
};
struct DividedBandwidth : SimulatedComponents, testing::WithParamInterface<BandwidthShare> {
  void Divide(BandwidthController& controller) {
    while (recorder.SetCount() == 0) Work(controller);  // It works at intervals.
  }
};

TEST_P(DividedBandwidth, IsThatOfTheLimits) {
  const BandwidthShare& share = GetParam();
  Set(simulate::kMinBandwidth, share.limit);
  Set(simulate::kMaxBandwidth, share.limit);
  BandwidthController controller(call);
  controller.Start();
  Divide(controller);
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), share.bandwidth);
  EXPECT_EQ(simulate::kAudioTarget.Get(*store), share.audio);
  EXPECT_EQ(simulate::kVideoTarget.Get(*store), share.video);
  EXPECT_EQ(simulate::kTargetFps.Get(*store), share.fps);
  EXPECT_EQ(simulate::kActiveLayers.Get(*store), share.layers);
  EXPECT_EQ(simulate::kExpectedLoss.Get(*store), 0);
  EXPECT_FALSE(simulate::kAudioFec.Get(*store));
  EXPECT_FALSE(simulate::kRetransmissionFec.Get(*store));
}

INSTANTIATE_TEST_SUITE_P(Bandwidths, DividedBandwidth,
                         testing::Values(BandwidthShare{4000000, 4000000, 32000, 2500000, 30, 3},
                                         BandwidthShare{2000000, 2000000, 32000, 1950000, 30, 3},
                                         BandwidthShare{1232000, 1200000, 32000, 1200000, 30, 2},
                                         BandwidthShare{400000, 400000, 32000, 360000, 12, 2},
                                         BandwidthShare{382000, 380000, 32000, 350000, 11, 1},
                                         BandwidthShare{300000, 300000, 30000, 270000, 9, 1},
                                         BandwidthShare{50000, 50000, 12000, 80000, 7, 1}),
                         [](const auto& row) { return std::to_string(row.param.limit); });

// A bad link is taken for one that carries less than was thought.
TEST_F(DividedBandwidth, ShrinksAndIsProtectedOnALinkThatLosesPackets) {
  for (int i = 0; i < 20; ++i) SendTooMuch(Media::kVideo);
  BandwidthController controller(call);
  controller.Start();
  Divide(controller);
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), 680000);
  EXPECT_EQ(simulate::kExpectedLoss.Get(*store), std::lround(link.Now(0).loss * 20) * 5);
  EXPECT_TRUE(simulate::kAudioFec.Get(*store));
  EXPECT_TRUE(simulate::kRetransmissionFec.Get(*store));
}

TEST_F(DividedBandwidth, LeavesTheFrameRateWhereTheToggleIsOff) {
  Set(simulate::kMaxBandwidth, 300000);
  store->SetKalConfig(kalStore::KAL_CONFIG_GROUP_FEATURE, "VideoStrategyEnableFPSAdjust", "0", false, false);
  BandwidthController controller(call);
  controller.Start();
  Divide(controller);
  EXPECT_EQ(simulate::kTargetFps.Get(*store), 30);
}

}  // namespace
