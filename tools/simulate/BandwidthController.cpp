// SPDX-License-Identifier: Apache-2.0
#include "simulate/BandwidthController.h"

#include <algorithm>
#include <cmath>

#include "simulate/Keys.h"

namespace simulate {

namespace {

constexpr double kIntervalSeconds = 0.05;
constexpr double kCongestedDelayMs = 120;
constexpr double kCongestedLoss = 0.08;
constexpr double kLossyShare = 0.02;
constexpr double kBitsPerPicture = 30000;  // What a picture of the lowest layer needs to look like something.

// Cut to a few digits, so that small changes notify no subscriber.
int Rounded(double bitrate) {
  bitrate = std::clamp<double>(bitrate, 0, kMostBitrate);
  const double step = bitrate >= 1e6 ? 50000 : bitrate >= 1e5 ? 10000 : 1000;
  return static_cast<int>(std::floor(bitrate / step) * step);
}

double Within(double value, double least, double most) {
  return std::min(std::max(value, least), std::max(least, most));
}

}  // namespace

BandwidthController::BandwidthController(const CallContext& call)
    : Component("bandwidth controller", call), m_settings(makeSettings()) {
  m_settings.Follow(kMinBandwidth, Way::kHandedOver, m_minBandwidth);
  m_settings.Follow(kMaxBandwidth, Way::kHandedOver, m_maxBandwidth);
  m_settings.Follow(kVideoMaxFps, Way::kPosted, m_maxFps);
}

void BandwidthController::Receive(const SettingsDocument& document) {
  Post([this, &document] { m_settings.Apply(document); });
}

void BandwidthController::work(RunTime now, double elapsed) {
  m_sinceLast += elapsed;
  if (m_sinceLast < kIntervalSeconds) return;
  const Link::State link = m_call.link.Now(now);
  if (m_estimate == 0) m_estimate = m_settings.Read(kStartBandwidth);
  estimate(link, m_sinceLast);
  divide(link);
  m_sinceLast = 0;
}

void BandwidthController::estimate(const Link::State& link, double elapsed) {
  const double bits = m_call.link.Received(Media::kAudio).bits + m_call.link.Received(Media::kVideo).bits;
  m_carried.Add(bits - m_seenBits, elapsed);
  m_seenBits = bits;
  const bool isCongested = link.delayMs > kCongestedDelayMs || link.loss > kCongestedLoss;
  // Far above what is carried there is nothing to learn from.
  const double ceiling = 1.5 * m_carried.PerSecond() + 100000;
  m_estimate = isCongested
                   ? 0.85 * m_estimate
                   : std::min(m_estimate * (1 + elapsed) + 400000 * elapsed, std::max(m_estimate, ceiling));
  m_estimate = Within(m_estimate, m_minBandwidth, m_maxBandwidth);
}

void BandwidthController::divide(const Link::State& link) {
  const double audio =
      Within(m_estimate * 0.1, m_settings.Read(kAudioMinBitrate), m_settings.Read(kAudioBitrate));
  const double video =
      Within(m_estimate - audio, m_settings.Read(kVideoMinBitrate), m_settings.Read(kVideoMaxBitrate));
  const double fps = m_settings.IsOn(kalStore::KAL_FT_VideoStrategyEnableFPSAdjust)
                         ? Within(video / kBitsPerPicture, m_settings.Read(kVideoMinFps), m_maxFps)
                         : m_maxFps.load();
  const int layers = video > 1200000 ? 3 : video > 350000 ? 2 : 1;
  const bool isLossy = link.loss > kLossyShare;

  m_settings.Set(kTargetBandwidth, Rounded(m_estimate));
  m_settings.Set(kAudioTarget, Rounded(audio));
  m_settings.Set(kVideoTarget, Rounded(video));
  m_settings.Set(kTargetFps, static_cast<int>(fps));
  m_settings.Set(kActiveLayers, std::min(layers, std::max(1, m_settings.Read(kVideoLayers))));
  m_settings.Set(kExpectedLoss, static_cast<int>(std::lround(link.loss * 20)) * 5);
  m_settings.Set(kAudioFec, isLossy);
  m_settings.Set(kRetransmissionFec, isLossy);
}

}  // namespace simulate
