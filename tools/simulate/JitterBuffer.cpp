// SPDX-License-Identifier: Apache-2.0
#include "simulate/JitterBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "simulate/Keys.h"

namespace simulate {

namespace {

// The target is set in steps, so that small changes notify no subscriber.
constexpr int kStepMs = 5;

}  // namespace

JitterBuffer::JitterBuffer(const CallContext& call)
    : Component("jitter buffer", call), m_statistics(call.callId), m_settings(makeSettings()) {
  m_settings.Follow(kJitterMinDelayMs, Way::kPosted, m_minDelayMs);
  m_settings.Follow(kJitterMaxDelayMs, Way::kPosted, m_maxDelayMs);
  m_settings.Bind(kPlayoutDelayMs, [this] { return m_playoutMs.load(); });
}

void JitterBuffer::work(RunTime now, double elapsed) {
  const Link::State link = m_call.link.Now(now);
  const Link::Traffic traffic = m_call.link.Received(Media::kAudio);
  const int least = std::clamp<int>(m_minDelayMs, 0, kMostDelayMs);
  const int most = std::clamp<int>(m_maxDelayMs, least, kMostDelayMs);
  const double wanted = std::clamp<double>(15 + 6 * link.jitterMs, least, most);
  // Up at once, down slowly.
  m_targetMs =
      wanted > m_targetMs ? wanted : m_targetMs + (wanted - m_targetMs) * std::min(1.0, elapsed / 0.4);
  m_playoutMs = link.delayMs + m_targetMs;
  const int target = static_cast<int>(std::ceil(m_targetMs / kStepMs)) * kStepMs;
  m_settings.Set(kJitterTargetMs, target);

  kalStore::st_KalAudioJitterBufferStatistics jitter{};
  jitter.stat8 = traffic.received - m_seen.received;
  jitter.stat12 = traffic.lost - m_seen.lost;
  jitter.stat36 = static_cast<std::uint32_t>(target);
  jitter.stat40 = traffic.received;
  jitter.stat48 = traffic.lost;
  m_statistics->updateJitterBufferStatistics(0, jitter,
                                             std::min(255, static_cast<int>(std::lround(link.jitterMs))),
                                             std::min(255, target / kStepMs));
  ++m_call.recorder.statisticsWrites;
  m_seen = traffic;
}

}  // namespace simulate
