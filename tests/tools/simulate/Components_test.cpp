// SPDX-License-Identifier: Apache-2.0
// What the components of a simulated call make of their settings, on a link that carries nothing.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "simulate/AudioSender.h"
#include "simulate/BandwidthController.h"
#include "simulate/JitterBuffer.h"
#include "simulate/Keys.h"
#include "simulate/VideoSender.h"
#include "tessel/CallStore.h"

namespace {

using simulate::AudioSender;
using simulate::BandwidthController;
using simulate::JitterBuffer;
using simulate::VideoSender;

constexpr std::uint32_t kSimulatedCall = 4713;

struct SimulatedComponents : testing::Test {
  template <class Key, class T>
  void Set(const Key& key, T value) {
    key.Set(*store, value);
  }

  const kalStore::CallStore store{kSimulatedCall, kalStore::CallStore::kEndsCall};
  simulate::Recorder recorder;
  simulate::Ledger ledger{recorder};
  simulate::Link link{10, 0};
  const simulate::CallContext call{kSimulatedCall, recorder, ledger, link};
};

TEST_F(SimulatedComponents, JitterBufferTakesStepsUpAtOnceWithinItsLimits) {
  Set(simulate::kJitterMinDelayMs, 203);
  JitterBuffer buffer(call);
  buffer.Start();
  buffer.Tick();
  buffer.Drain();
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 205);
  ConfigData playout;
  const auto& key = simulate::kPlayoutDelayMs;
  EXPECT_EQ(store->GetDynamicConfig(key.Group(), key.Name(), playout, {}), kalStore::kResultOk);
  EXPECT_GE(playout.ToDouble(), 203);

  Set(simulate::kJitterMinDelayMs, 100000);
  buffer.Drain();
  buffer.Tick();
  buffer.Drain();
  EXPECT_EQ(simulate::kJitterTargetMs.Get(*store), 10000);
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
    audio.Tick();
    audio.Drain();
    video.Tick();
    video.Drain();
    const simulate::Link::Traffic traffic = link.Received(simulate::Media::kAudio);
    packets = traffic.received + traffic.lost;
  }
  const double frames = 200 * simulate::Seconds(recorder.Now());
  EXPECT_LE(packets, frames);
  EXPECT_LE(static_cast<double>(recorder.framesSent), frames);
}

struct BandwidthShare {
  int bandwidth, audio, video, fps, layers;
};
struct DividedBandwidth : SimulatedComponents, testing::WithParamInterface<BandwidthShare> {
  void Divide(BandwidthController& controller) {
    // It works at intervals.
    while (recorder.SetCount() == 0) {
      controller.Tick();
      controller.Drain();
    }
  }
};

TEST_P(DividedBandwidth, IsThatOfTheLimits) {
  const BandwidthShare& share = GetParam();
  Set(simulate::kMinBandwidth, share.bandwidth);
  Set(simulate::kMaxBandwidth, share.bandwidth);
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
                         testing::Values(BandwidthShare{4000000, 32000, 2500000, 30, 3},
                                         BandwidthShare{2000000, 32000, 1950000, 30, 3},
                                         BandwidthShare{400000, 32000, 360000, 12, 2},
                                         BandwidthShare{300000, 30000, 270000, 9, 1},
                                         BandwidthShare{50000, 12000, 80000, 7, 1}),
                         [](const auto& row) { return std::to_string(row.param.bandwidth); });

TEST_F(DividedBandwidth, LeavesTheFrameRateWhereTheToggleIsOff) {
  Set(simulate::kMaxBandwidth, 300000);
  store->SetKalConfig(kalStore::KAL_CONFIG_GROUP_FEATURE, "VideoStrategyEnableFPSAdjust", "0", false, false);
  BandwidthController controller(call);
  controller.Start();
  Divide(controller);
  EXPECT_EQ(simulate::kTargetFps.Get(*store), 30);
}

}  // namespace
