// SPDX-License-Identifier: Apache-2.0
#include "simulate/AudioReceiver.h"

#include <algorithm>
#include <cstdint>

#include "simulate/Keys.h"

namespace simulate {

AudioReceiver::AudioReceiver(const CallContext& call)
    : Component("audio receiver", call), m_statistics(call.callId), m_settings(makeSettings()) {
  m_settings.Follow(kJitterTargetMs, Way::kDirect, m_bufferDelayMs);
  m_settings.Follow(kAudioFec, Way::kHandedOver, m_hasFec);
}

void AudioReceiver::work(RunTime now, double elapsed) {
  const Link::Traffic traffic = m_call.link.Received(Media::kAudio);
  m_received.Add(traffic.bits - m_seenBits, elapsed);
  m_seenBits = traffic.bits;

  const auto pathMs = static_cast<std::uint32_t>(m_call.link.Now(now).delayMs);
  const auto bufferMs = static_cast<std::uint32_t>(std::clamp<int>(m_bufferDelayMs, 0, kMostDelayMs));
  m_statistics->updateRxBitRate(0, static_cast<std::uint32_t>(m_received.PerSecond()));
  m_statistics->updatePayloadType(0, kalStore::KAL_AUDIO_PAYLOAD_DYNAMIC_101);
  m_statistics->updateDecodeInfo(0, m_hasFec, traffic.received);
  m_statistics->updateE2EDelayInfo(0, pathMs + bufferMs, pathMs, bufferMs);
  m_call.recorder.statisticsWrites += 4;
}

}  // namespace simulate
