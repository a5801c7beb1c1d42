// SPDX-License-Identifier: Apache-2.0
// What the components of a simulated call make of their settings and of what the link carries.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <future>
#include <string>

#include "simulate/AudioReceiver.h"
#include "simulate/AudioSender.h"
#include "simulate/BandwidthController.h"
#include "simulate/JitterBuffer.h"
#include "simulate/Keys.h"
#include "simulate/Listener.h"
#include "simulate/Rate.h"
#include "simulate/Reporter.h"
#include "simulate/VideoReceiver.h"
#include "simulate/VideoSender.h"
#include "tessel/CallStore.h"
#include "tessel/KalConfigHelper.h"
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
constexpr simulate::RunTime kMs = kSecond / 1000;

// The link is ahead of the clock of the components: to them it stands still.
struct SimulatedComponents : testing::Test {
  SimulatedComponents() { link.Now(linkTime); }

  template <class Key, class T>
  void Set(const Key& key, T value) {
    key.Set(*store, value);
  }
  // What was set and posted to it has arrived when it works.
  static void WorkAt(simulate::RunTime now, Component& component) {
    component.Drain();
    component.Tick(now);
    component.Drain();
  }
  void Work(Component& component, simulate::RunTime elapsed = 10 * kMs) {
    WorkAt(time += elapsed, component);
  }
  // The link's queue has room for 1.2 Mbit, and is empty after half a second.
  void Carry(Media media, double bits, simulate::RunTime passing) {
    link.Send(media, linkTime, 1000, bits);
    linkTime += passing;
    link.Now(linkTime);
  }
  void SendTooMuch(Media media) { Carry(media, 5e6, 1); }
  void Divide() {
    BandwidthController controller(call);
    controller.Start();
    Work(controller, 50 * kMs);
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
  simulate::RunTime time = 0;  // That of the components.
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

TEST_F(SimulatedComponents, JitterBufferTakesItsTimeToGoDown) {
  JitterBuffer buffer(call);
  buffer.Start();
  const Link::State state = link.Now(0);
  const double wanted = 15 + 6 * state.jitterMs;
  double targetMs = 60;
  for (const double part : {0.25, 0.5, 1.0, 1.0}) {
    Work(buffer, part == 1 ? kSecond : static_cast<simulate::RunTime>(part * 400 * kMs));
    targetMs += (wanted - targetMs) * part;
    ConfigData playout;
    const auto& key = simulate::kPlayoutDelayMs;
    EXPECT_EQ(store->GetDynamicConfig(key.Group(), key.Name(), playout, {}), kalStore::kResultOk);
    EXPECT_NEAR(playout.ToDouble(), state.delayMs + targetMs, 1e-3);
    EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), std::ceil(targetMs / 5) * 5);
  }
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

TEST_F(SimulatedComponents, JitterBufferHoldsTwentyMillisecondsWhereLittleVaries) {
  for (int i = 0; i < 200; ++i) link.Now(linkTime += kMs);
  ASSERT_LT(6 * link.Now(0).jitterMs, 5);
  JitterBuffer buffer(call);
  buffer.Start();
  Work(buffer, kSecond);
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 20);
}

// The queue is full, and empty, and full.
TEST_F(SimulatedComponents, JitterBufferHoldsThreeHundredMillisecondsWhereMuchVaries) {
  for (int i = 0; i < 100; ++i) Carry(Media::kAudio, 5e6, i % 2 == 0 ? 1 : kSecond);
  ASSERT_GT(link.Now(0).jitterMs, 256);
  JitterBuffer buffer(call);
  buffer.Start();
  Work(buffer);
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 300);
  EXPECT_EQ(ReceivedAudio().jitterBytes.jitter1, 255);
  Set(simulate::kJitterMinDelayMs, 100000);
  Work(buffer);
  EXPECT_EQ(ReceivedAudio().jitterBytes.jitter2, 255);
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
  Work(sender, 70 * kMs);
  const Link::Traffic sent = link.Received(Media::kAudio);
  EXPECT_EQ(sent.received, 3U);
  EXPECT_NEAR(sent.bits, 3 * 50000 * 0.02, 1e-6);
  const kalStore::st_KalAudioBlock block = SentAudio();
  EXPECT_EQ(block.codecStat0, 1U);
  EXPECT_EQ(block.codecCode, 4U);
  EXPECT_EQ(block.codecStat16.Value(), 3U);
  EXPECT_NEAR(block.bitrate, sent.bits / 0.25, 1);
  EXPECT_GE(block.speechLevel[0], -30);
  EXPECT_LE(block.speechLevel[0], -18);
  EXPECT_EQ(block.speechLevel[1], block.speechLevel[0] - 3);
  EXPECT_EQ(block.speechLevel[2], block.speechLevel[0] - 6);
  EXPECT_EQ(recorder.statisticsWrites, 3U);
  Work(sender);
  EXPECT_EQ(SentAudio().codecStat16.Value(), 4U);
  EXPECT_EQ(link.Received(Media::kAudio).received, 4U);
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
  EXPECT_NEAR(block.bitrate, link.Received(Media::kAudio).bits / 0.25, 1);
  EXPECT_EQ(block.e2eDelay[0], pathMs + 100);
  EXPECT_EQ(block.e2eDelay[1], pathMs);
  EXPECT_EQ(block.e2eDelay[2], 100U);
  EXPECT_EQ(recorder.statisticsWrites, 4U);
  Work(receiver, 125 * kMs);
  EXPECT_NEAR(ReceivedAudio().bitrate, block.bitrate / 2, 1);
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
    Work(sender, 120 * kMs);
    const Link::Traffic now = link.Received(Media::kAudio);
    EXPECT_GT(now.received, before.received);
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
  const auto sentPackets = [&] {
    const Link::Traffic traffic = link.Received(Media::kVideo);
    return traffic.received + traffic.lost;
  };
  const auto bytesOfAFrame = [&] {
    Work(sender, kSecond);
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
    const std::uint32_t packets = sentPackets();
    EXPECT_EQ(bytesOfAFrame(), taken / 8) << bitrate;
    EXPECT_EQ(sentPackets() - packets, std::ceil(taken / 9600.0)) << bitrate;
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
  EXPECT_NEAR(sync.value[0], traffic.bits / 0.25, 1);
  EXPECT_NEAR(sync.value[1], 0.2 * arrived * 100 * 100, 1);
  EXPECT_EQ(sync.value[2], traffic.received);
  EXPECT_EQ(sync.value[3], traffic.lost);
  EXPECT_NEAR(sync.value[4], playoutMs - link.Now(0).delayMs, 1);
  EXPECT_EQ(recorder.statisticsWrites, 2U);
  const kal::_tagSyncStatistics first = sync;
  Work(receiver, 125 * kMs);
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_NEAR(sync.value[0], first.value[0] / 2, 1);
  EXPECT_EQ(sync.value[1], first.value[1]);
}

TEST_F(SimulatedComponents, VideoReceiverExpectsThirtyFramesUntilAnotherRateIsSet) {
  VideoReceiver receiver(call);
  receiver.Start();
  Carry(Media::kVideo, 1000, kMs);
  Work(receiver);
  const Link::Traffic traffic = link.Received(Media::kVideo);
  kal::_tagSyncStatistics sync;
  audioStatistics->GetAVSyncInfo(&sync, 0);
  const double first = 0.2 * traffic.received / 1000;
  EXPECT_NEAR(sync.value[1], first * 30 * 100, 1);
  link.Send(Media::kVideo, linkTime, 1, 100);
  Work(receiver);
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_NEAR(sync.value[1], (first + (1 - first) * 0.2) * 30 * 100, 1);
  Set(simulate::kTargetFps, 0);
  Work(receiver);
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_EQ(sync.value[1], 0U);
}

TEST_F(SimulatedComponents, VideoReceiverShowsHalfThePicturesWhereHalfThePacketsAreLost) {
  VideoReceiver receiver(call);
  receiver.Start();
  link.Send(Media::kVideo, linkTime, 10, 2.5e6);
  const Link::Traffic traffic = link.Received(Media::kVideo);
  ASSERT_EQ(traffic.received, 5U);
  ASSERT_EQ(traffic.lost, 5U);
  Work(receiver);
  kal::_tagSyncStatistics sync;
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_NEAR(sync.value[1], 0.2 * 0.5 * 30 * 100, 1);
}

TEST_F(SimulatedComponents, VideoReceiverWaitsForNoVoiceThatIsBehind) {
  JitterBuffer buffer(call);
  VideoReceiver receiver(call);
  buffer.Start();
  receiver.Start();
  Work(buffer);
  SendTooMuch(Media::kVideo);
  Work(receiver);
  kal::_tagSyncStatistics sync;
  audioStatistics->GetAVSyncInfo(&sync, 0);
  EXPECT_EQ(sync.value[4], 0U);
}

TEST_F(SimulatedComponents, CountEachTickThatTheyHaveWorked) {
  VideoReceiver receiver(call);
  receiver.Start();
  for (unsigned ticks = 0; ticks < 3; ++ticks) {
    EXPECT_EQ(receiver.Ticks(), ticks);
    Work(receiver);
  }
  // Those that come before it has begun are one.
  std::promise<void> go;
  receiver.Post([&] { go.get_future().wait(); });
  for (int i = 0; i < 3; ++i) receiver.Tick(time += kMs);
  go.set_value();
  receiver.Drain();
  EXPECT_EQ(receiver.Ticks(), 4U);
}

TEST_F(SimulatedComponents, WorkAgainForATickThatComesWhileTheyWork) {
  VideoReceiver receiver(call);
  kalStore::KalConfigHelper settings(kSimulatedCall);
  const auto& key = simulate::kPlayoutDelayMs;
  settings.BindConfig(
      key.Name(),
      [&](const kalStore::KalConfigEvent& read) {
        if (receiver.Ticks() == 0) receiver.Tick(time += kMs);
        return read.m_defaultValue;
      },
      key.Group());
  receiver.Start();
  Work(receiver);
  receiver.Drain();
  EXPECT_EQ(receiver.Ticks(), 2U);
}

TEST_F(SimulatedComponents, VideoSenderReportsEachLayerAndThePicture) {
  Set(simulate::kHardwareEncode, false);
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 200);
  Set(simulate::kVideoTarget, 800000);
  Set(simulate::kActiveLayers, 2);
  Work(sender, 18 * kMs);
  EXPECT_EQ(recorder.framesSent, 3U);
  const kalStore::st_KalVideoTxBlock block = SentVideo();
  EXPECT_EQ(block.activeStreams, 2);
  EXPECT_EQ(block.codecCode, 100U);
  EXPECT_EQ(block.encodedWidth, 640U);
  EXPECT_EQ(block.encodedHeight, 360U);
  EXPECT_EQ(block.hardwareEncoder, 0);
  EXPECT_EQ(block.encoderFps, 3 / 0.25F);
  EXPECT_NEAR(block.encoderBitrate, 3 * 4000 / 0.25, 1);
  EXPECT_EQ(block.encoderBitrate2, 800000);
  EXPECT_EQ(block.capturedFrames, 3U);
  EXPECT_EQ(block.framesFedToEncoder, 3U);
  EXPECT_EQ(block.encodedFrames, 3U);
  for (int layer = 0; layer < 2; ++layer) {
    EXPECT_EQ(block.layer[layer].codecCode, 100U);
    EXPECT_EQ(block.layer[layer].counter, 3U);
    EXPECT_EQ(block.layer[layer].targetFps, 200);
    EXPECT_EQ(block.layer[layer].intervalMaximum, 500);  // Bytes of a frame.
  }
  EXPECT_EQ(block.layer[2].counter, 0U);
  EXPECT_EQ(block.layer[2].targetFps, 0);
  EXPECT_EQ(recorder.statisticsWrites, 9U);
  Work(sender, 2 * kMs);
  EXPECT_EQ(recorder.framesSent, 4U);
  EXPECT_EQ(SentVideo().layer[1].counter, 4U);
  Set(simulate::kActiveLayers, 3);
  Work(sender);
  EXPECT_EQ(SentVideo().encodedWidth, 1280U);
  EXPECT_EQ(SentVideo().encodedHeight, 720U);
}

TEST_F(SimulatedComponents, VideoSenderSendsAnIdrFrameNowAndThen) {
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 100);
  kalStore::st_KalVideoLayer layer{};
  for (const std::uint32_t frames : {89U, 90U, 179U, 180U}) {
    Work(sender, (frames - layer.counter) * kSecond / 100);
    const kalStore::st_KalVideoTxBlock block = SentVideo();
    EXPECT_EQ(block.capturedFrames, frames);
    EXPECT_EQ(block.framesFedToEncoder, frames);
    EXPECT_EQ(block.encodedFrames, frames);
    layer = block.layer[0];
    EXPECT_EQ(layer.counter, frames);
    EXPECT_EQ(layer.idrSent, frames / 90);
    EXPECT_EQ(layer.idrRequests, layer.idrSent);
  }
}

TEST_F(SimulatedComponents, VideoSenderSendsPacketsAndATenthMoreAgainstLosses) {
  VideoSender sender(call);
  sender.Start();
  Set(simulate::kTargetFps, 100);
  Set(simulate::kVideoTarget, 100000);
  Set(simulate::kRetransmissionFec, true);
  Work(sender, 30 * kMs);
  const Link::Traffic first = link.Received(Media::kVideo);
  EXPECT_NEAR(first.bits, 3 * 1100, 1e-3);
  Set(simulate::kVideoTarget, 960000);  // A packet for each frame.
  Set(simulate::kRetransmissionFec, false);
  Work(sender, 50 * kMs);
  const Link::Traffic all = link.Received(Media::kVideo);
  EXPECT_EQ(all.received + all.lost - first.received - first.lost, 5U);
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
  ConfigData playout;
  const auto& key = simulate::kPlayoutDelayMs;
  EXPECT_EQ(store->GetDynamicConfig(key.Group(), key.Name(), playout, {}), kalStore::kResultOk);
  EXPECT_EQ(playout.ToDouble(), 60);
  Work(buffer);
  EXPECT_LE(simulate::kJitterTargetMs.Get(*store), 60);

  AudioSender audio(call);
  VideoSender video(call);
  audio.Start();
  video.Start();
  Work(audio);
  Work(video);
  const Link::Traffic sent = link.Received(Media::kAudio);
  EXPECT_GT(sent.received, 0U);
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
TEST_F(SimulatedComponents, SendersSendTheFramesOfTheTimeThatPassed) {
  Set(simulate::kAudioFrameMs, 20);
  Set(simulate::kTargetFps, 50);
  AudioSender audio(call);
  VideoSender video(call);
  audio.Start();
  video.Start();
  for (const int ms : {19, 21, 59, 199, 201, 201, 10001}) {
    WorkAt(ms * kMs, audio);
    WorkAt(ms * kMs, video);
    EXPECT_EQ(SentAudio().codecStat16.Value(), ms / 20) << ms;
    EXPECT_EQ(recorder.framesSent, ms / 20) << ms;
  }
}

TEST_F(SimulatedComponents, ReporterReadsTenTimesASecondAndAtTheEnd) {
  Set(simulate::kTargetFps, 100);
  VideoSender sender(call);
  simulate::Reporter reporter(call);
  sender.Start();
  reporter.Start();
  constexpr struct {
    int ms;
    unsigned reports, frames;
  } kRows[] = {{99, 0, 0}, {101, 1, 10}, {200, 1, 10}, {202, 2, 20}, {251, 2, 20}};
  for (const auto& [ms, reports, frames] : kRows) {
    WorkAt(ms * kMs, sender);
    WorkAt(ms * kMs, reporter);
    EXPECT_EQ(recorder.statisticsReads, 4 * reports) << ms;
    EXPECT_EQ(recorder.framesReported, frames) << ms;
  }
  reporter.ReadLast();
  EXPECT_EQ(recorder.statisticsReads, 12U);
  EXPECT_EQ(recorder.framesReported, 25U);
}

TEST_F(SimulatedComponents, ListenerReadsAllOnceItIsNotifiedOfAny) {
  simulate::Listener listener(call, Way::kDirect);
  listener.Start();
  Work(listener);
  EXPECT_EQ(recorder.reads, 0U);
  std::uint64_t reads = 0;
  const auto expectReads = [&] {
    for (int i = 0; i < 2; ++i) Work(listener);
    EXPECT_EQ(recorder.reads, reads += 9);
  };
  for (const auto* key :
       {&simulate::kExpectedLoss, &simulate::kAudioTarget, &simulate::kVideoTarget, &simulate::kTargetFps,
        &simulate::kActiveLayers, &simulate::kTargetBandwidth, &simulate::kJitterTargetMs}) {
    Set(*key, 7);
    expectReads();
  }
  for (const auto* key : {&simulate::kAudioFec, &simulate::kRetransmissionFec}) {
    Set(*key, true);
    expectReads();
  }
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
                         testing::Values(BandwidthShare{INT_MIN, 0, 12000, 80000, 7, 1},
                                         BandwidthShare{INT_MAX, 100000000, 32000, 2500000, 30, 3},
                                         BandwidthShare{4000000, 4000000, 32000, 2500000, 30, 3},
                                         BandwidthShare{2000000, 2000000, 32000, 1950000, 30, 3},
                                         BandwidthShare{1232000, 1200000, 32000, 1200000, 30, 2},
                                         BandwidthShare{400000, 400000, 32000, 360000, 12, 2},
                                         BandwidthShare{382000, 380000, 32000, 350000, 11, 1},
                                         BandwidthShare{300000, 300000, 30000, 270000, 9, 1},
                                         BandwidthShare{50000, 50000, 12000, 80000, 7, 1}),
                         [](const auto& row) {
                           return row.param.limit < 0 ? "Negative" : std::to_string(row.param.limit);
                         });

TEST_F(DividedBandwidth, IsOfNoMoreLayersThanAreSetAndThereAre) {
  Set(simulate::kMinBandwidth, INT_MAX);
  for (const auto& [set, taken] : {TakenNumber{-1, 1}, {0, 1}, {1, 1}, {2, 2}, {3, 3}, {4, 3}}) {
    Set(simulate::kVideoLayers, set);
    Divide();
    EXPECT_EQ(simulate::kActiveLayers.Get(*store), taken) << set;
  }
}

TEST_F(DividedBandwidth, IsDividedTwentyTimesASecond) {
  BandwidthController controller(call);
  controller.Start();
  constexpr struct {
    int ms;
    unsigned divisions;
  } kRows[] = {{49, 0}, {51, 1}, {100, 1}, {102, 2}};
  for (const auto& [ms, divisions] : kRows) {
    WorkAt(ms * kMs, controller);
    EXPECT_EQ(recorder.SetCount(), 8 * divisions) << ms;
  }
}

TEST_F(DividedBandwidth, StaysWhileNothingIsCarriedToLearnFrom) {
  Divide();
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), 800000);
}

TEST_F(DividedBandwidth, GrowsWhileMuchIsCarried) {
  for (int i = 0; i < 100; ++i) Carry(Media::kVideo, 1e6, kSecond);
  Divide();
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), 860000);
}

TEST_F(DividedBandwidth, GrowsToHalfMoreThanIsCarriedAndALittle) {
  Carry(Media::kAudio, 60000, kSecond);
  Carry(Media::kVideo, 60000, kSecond);
  const double carried = (link.Received(Media::kAudio).bits + link.Received(Media::kVideo).bits) / 0.25;
  Divide();
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), std::floor((1.5 * carried + 100000) / 10000) * 10000);
}

TEST_F(DividedBandwidth, GrowsWithWhatWasCarriedSinceTheLastTime) {
  BandwidthController controller(call);
  controller.Start();
  simulate::Rate carried;
  double seen = 0;
  for (const double bits : {60000, 30000}) {
    Carry(Media::kVideo, bits, kSecond);
    const double all = link.Received(Media::kVideo).bits;
    carried.Add(all - seen, 0.05);
    seen = all;
    Work(controller, 50 * kMs);
  }
  const double ceiling = 1.5 * carried.PerSecond() + 100000;
  EXPECT_EQ(simulate::kTargetBandwidth.Get(*store), std::floor(std::max(800000., ceiling) / 10000) * 10000);
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
