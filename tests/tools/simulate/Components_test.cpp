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
constexpr simulate::RunTime kSecond = 1000000000;

// The link is ahead of the clock of the components: to them it stands still.
struct SimulatedComponents : testing::Test {
  SimulatedComponents() { link.Now(linkTime); }

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
  // The link's queue has room for 1.2 Mbit, and is empty after half a second.
  void Carry(Media media, double bits, simulate::RunTime passing) {
    link.Send(media, linkTime, 1000, bits);
    linkTime += passing;
    link.Now(linkTime);
  }
  void SendTooMuch(Media media) { Carry(media, 5e6, 1); }
  // The controller works at intervals.
  void Divide() {
    BandwidthController controller(call);
    controller.Start();
    while (recorder.SetCount() == 0) Work(controller);
  }

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
  simulate::RunTime linkTime = 1000 * kSecond;
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

TEST_F(SimulatedComponents, JitterBufferHoldsSixTimesTheJitter) {
  SendTooMuch(Media::kAudio);
  JitterBuffer buffer(call);
  buffer.Start();
  Work(buffer);
  const double jitterMs = link.Now(0).jitterMs;
  EXPECT_GT(jitterMs, 20);
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), std::ceil((15 + 6 * jitterMs) / 5) * 5);
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

// A document may set any number.
struct TakenNumber {
  int set, taken;
};

TEST_F(SimulatedComponents, AudioReceiverTakesTheNearestDelayThatABufferHas) {
  AudioReceiver receiver(call);
  receiver.Start();
  for (const auto& [set, taken] : {TakenNumber{-1, 0}, {0, 0}, {1, 1}, {10000, 10000}, {10001, 10000}}) {
    Set(simulate::kJitterTargetMs, set);
    Work(receiver);
    EXPECT_EQ(ReceivedAudio().e2eDelay[2], taken) << set;
  }
}

TEST_F(SimulatedComponents, AudioSenderTakesTheNearestNumbersThatItCanWorkWith) {
  AudioSender sender(call);
  sender.Start();
  Set(simulate::kAudioFec, true);
  // Bits of a frame.
  const auto expectFrames = [&](double bits) {
    const Link::Traffic before = link.Received(Media::kAudio);
    Link::Traffic now = before;
    while (now.received == before.received) {
      Work(sender);
      now = link.Received(Media::kAudio);
    }
    EXPECT_NEAR(now.bits - before.bits, (now.received - before.received) * bits, 1e-3);
  };
  Set(simulate::kAudioTarget, 100000);
  for (const auto& [ms, taken] : {TakenNumber{0, 5}, {5, 5}, {6, 6}, {120, 120}, {121, 120}}) {
    Set(simulate::kAudioFrameMs, ms);
    expectFrames(100 * taken);
  }
  Set(simulate::kAudioFrameMs, 5);
  for (const auto& [percent, taken] : {TakenNumber{-1, 0}, {0, 0}, {1, 1}, {50, 50}, {51, 50}}) {
    Set(simulate::kExpectedLoss, percent);
    expectFrames(5 * (100 + taken));
  }
  Set(simulate::kExpectedLoss, 0);
  constexpr int kMost = simulate::kMostBitrate;
  for (const auto& [bitrate, taken] : {TakenNumber{-1, 0}, {0, 0}, {1000, 1000}, {kMost + 1000, kMost}}) {
    Set(simulate::kAudioTarget, bitrate);
    expectFrames(taken * 0.005);
  }
}

TEST_F(SimulatedComponents, VideoSenderTakesTheNearestNumbersThatItCanWorkWith) {
  VideoSender sender(call);
  sender.Start();
  const auto bytesOfAFrame = [&] {
    Work(sender);
    kalStore::st_KalVideoTxBlock block;
    videoStatistics->GetTxMediaInfo(&block, true);
    return block.layer[0].intervalMaximum;
  };
  Set(simulate::kVideoTarget, 96000);
  for (const auto& [fps, taken] : {TakenNumber{-1, 1}, {0, 1}, {1, 1}, {2, 2}, {240, 240}, {241, 240}}) {
    Set(simulate::kTargetFps, fps);
    EXPECT_EQ(bytesOfAFrame(), 12000 / taken) << fps;
  }
  Set(simulate::kTargetFps, 1);
  constexpr int kMost = simulate::kMostBitrate;
  for (const auto& [bitrate, taken] :
       {TakenNumber{-8, 0}, {0, 0}, {8, 8}, {kMost, kMost}, {kMost + 8, kMost}}) {
    Set(simulate::kVideoTarget, bitrate);
    EXPECT_EQ(bytesOfAFrame(), taken / 8) << bitrate;
  }
  constexpr int kAll = kalStore::kVideoLayerCount;
  for (const auto& [layers, taken] :
       {TakenNumber{-1, 1}, {0, 1}, {1, 1}, {2, 2}, {kAll, kAll}, {kAll + 1, kAll}}) {
    Set(simulate::kActiveLayers, layers);
    Work(sender);
    EXPECT_EQ(SentVideo().activeStreams, taken) << layers;
  }
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
  const kal::_tagSyncStatistics first = sync;
  Work(receiver);
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_LT(sync.value[0], first.value[0]);
  EXPECT_EQ(sync.value[1], first.value[1]);
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
  EXPECT_EQ(recorder.statisticsWrites, 10 * sender.Ticks());
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

TEST_F(SimulatedComponents, VideoSenderSendsPacketsAndATenthMoreAgainstLosses) {
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 100);
  Set(simulate::kVideoTarget, 100000);
  Set(simulate::kRetransmissionFec, true);
  while (recorder.framesSent < 3) Work(sender);
  const std::uint64_t frames = recorder.framesSent;
  const Link::Traffic first = link.Received(Media::kVideo);
  EXPECT_NEAR(first.bits, 1100 * static_cast<double>(frames), 1e-3);
  Set(simulate::kVideoTarget, 960000);  // A packet for each frame.
  Set(simulate::kRetransmissionFec, false);
  while (recorder.framesSent < frames + 3) Work(sender);
  const Link::Traffic all = link.Received(Media::kVideo);
  EXPECT_EQ(all.received + all.lost - first.received - first.lost, recorder.framesSent - frames);
}

TEST_F(SimulatedComponents, WorkWithDefaultsUntilOtherValuesAreSet) {
  AudioReceiver audioReceiver(call);
  VideoReceiver videoReceiver(call);
  audioReceiver.Start();
  videoReceiver.Start();
  Work(audioReceiver);
  Work(videoReceiver);
  const kalStore::st_KalAudioBlock received = ReceivedAudio();
  EXPECT_EQ(received.bitrate, 0U);
  EXPECT_EQ(received.lbrrFlag, 0);
  EXPECT_EQ(received.e2eDelay[2], 60U);
  kal::_tagSyncStatistics sync;
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_EQ(sync.value[0], 0U);
  EXPECT_EQ(sync.value[1], 0U);
  EXPECT_NEAR(sync.value[4], 60 - link.Now(0).delayMs, 1);
  JitterBuffer buffer(call);
  buffer.Start();
  Work(buffer);
  EXPECT_LE(simulate::kJitterTargetMs.Get(*store), 60);

  AudioSender audio(call);
  VideoSender video(call);
  audio.Start();
  video.Start();
  while (recorder.framesSent == 0 || link.Received(Media::kAudio).received == 0) {
    Work(audio);
    Work(video);
  }
  const Link::Traffic sent = link.Received(Media::kAudio);
  EXPECT_NEAR(sent.bits, sent.received * 32000 * 0.02, 1e-6);
  EXPECT_EQ(SentAudio().codecStat0, 0U);
  const kalStore::st_KalVideoTxBlock block = SentVideo();
  EXPECT_EQ(block.activeStreams, 1);
  EXPECT_EQ(block.encoderBitrate2, 600000);
  EXPECT_EQ(block.layer[0].targetFps, 30);
  EXPECT_EQ(block.encodedWidth, 320U);
  EXPECT_EQ(block.encodedHeight, 180U);
  EXPECT_EQ(block.hardwareEncoder, 1);
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
struct DividedBandwidth : SimulatedComponents, testing::WithParamInterface<BandwidthShare> {};

TEST_P(DividedBandwidth, IsThatOfTheLimits) {
  const BandwidthShare& share = GetParam();
  Set(simulate::kMinBandwidth, share.limit);
  Set(simulate::kMaxBandwidth, share.limit);
  Divide();
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

TEST_F(DividedBandwidth, StaysWhileNothingIsCarriedToLearnFrom) {
  Divide();
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), 800000);
}

// The controller works after a twentieth of a second at the earliest.
TEST_F(DividedBandwidth, GrowsWhileMuchIsCarried) {
  for (int i = 0; i < 100; ++i) Carry(Media::kVideo, 1e6, kSecond);
  Divide();
  EXPECT_GE(simulate::kTargetBandwidth.Get(*store), 860000);
}

struct LinkUse {
  const char* name;
  double bits;
  int times;
  simulate::RunTime passing;
  int bandwidth, expectedLoss;
  bool isProtected;
};
struct CongestedLink : SimulatedComponents, testing::WithParamInterface<LinkUse> {};

TEST_P(CongestedLink, GetsLessAndALossyOneProtection) {
  const LinkUse& use = GetParam();
  for (int i = 0; i < use.times; ++i) Carry(Media::kVideo, use.bits, use.passing);
  Set(simulate::kMaxBandwidth, 800000);
  Divide();
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), use.bandwidth);
  EXPECT_EQ(simulate::kExpectedLoss.Get(*store), use.expectedLoss);
  EXPECT_EQ(simulate::kAudioFec.Get(*store), use.isProtected);
  EXPECT_EQ(simulate::kRetransmissionFec.Get(*store), use.isProtected);
}

INSTANTIATE_TEST_SUITE_P(Links, CongestedLink,
                         testing::Values(LinkUse{"Free", 1e6, 1, kSecond, 800000, 0, false},
                                         LinkUse{"Slow", 1e6, 1, 1, 680000, 0, false},
                                         LinkUse{"Lossy", 5e6, 1, kSecond, 800000, 10, true},
                                         LinkUse{"LossierStill", 5e6, 2, kSecond, 680000, 15, true},
                                         LinkUse{"Lossiest", 5e6, 5, kSecond, 680000, 30, true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(DividedBandwidth, LeavesTheFrameRateWhereTheToggleIsOff) {
  Set(simulate::kMaxBandwidth, 300000);
  store->SetKalConfig(kalStore::KAL_CONFIG_GROUP_FEATURE, "VideoStrategyEnableFPSAdjust", "0", false, false);
  Divide();
  EXPECT_EQ(simulate::kTargetFps.Get(*store), 30);
}

}  // namespace
