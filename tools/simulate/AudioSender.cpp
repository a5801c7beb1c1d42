// SPDX-License-Identifier: Apache-2.0
#include "simulate/AudioSender.h"

#include <algorithm>
#include <cmath>

#include "simulate/Keys.h"

namespace simulate {

AudioSender::AudioSender(const CallContext& call)
    : Component("audio sender", call), m_statistics(call.callId), m_settings(makeSettings()) {
  m_settings.Follow(kAudioTarget, Way::kHandedOver, m_bitrate);
  m_settings.Follow(kExpectedLoss, Way::kPosted, m_expectedLoss);
  m_settings.Follow(kAudioFec, Way::kPosted, m_hasFec);
}

void AudioSender::work(RunTime now, double elapsed) {
  const double frameSeconds = std::clamp(m_settings.Read(kAudioFrameMs), 5, 120) / 1000.0;
  m_owedFrames += elapsed / frameSeconds;
  const double frames = std::floor(m_owedFrames);
  m_owedFrames -= frames;
  // Redundancy costs what it repairs.
  const double bitrate = std::clamp<int>(m_bitrate, 0, kMostBitrate) *
                         (m_hasFec ? 1 + std::clamp<int>(m_expectedLoss, 0, 50) / 100.0 : 1.0);
  const double bits = frames * bitrate * frameSeconds;
  m_call.link.Send(Media::kAudio, now, static_cast<std::uint32_t>(frames), bits);
  m_sent.Add(bits, elapsed);
  m_frames += static_cast<std::uint64_t>(frames);

  kalStore::st_KalAudioCodecStatisticsInfo codec{};
  codec.stat0 = m_hasFec ? 1 : 0;
  codec.payloadType = kalStore::KAL_AUDIO_PAYLOAD_DYNAMIC_101;
  codec.stat16 = m_frames;
  m_statistics->updateSendCodecInfo(codec);
  m_statistics->updateTxBitRate(static_cast<std::uint32_t>(m_sent.PerSecond()));
  const auto level = static_cast<float>(-24 + 6 * std::sin(2 * Seconds(now)));
  m_statistics->updateSpeechLevel(level, level - 3, level - 6);
  m_call.recorder.statisticsWrites += 3;
}

}  // namespace simulate
