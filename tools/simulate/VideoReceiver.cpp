// SPDX-License-Identifier: Apache-2.0
#include "simulate/VideoReceiver.h"

#include <algorithm>

#include "simulate/Keys.h"

namespace simulate {

namespace {

constexpr double kCompleteWeight = 0.2;

// The words of a call's synchronisation record that it writes.
enum SyncWord {
  kSyncVideoBitrate,  // bit/s, received
  kSyncVideoFps,      // Frames per second, received, in hundredths.
  kSyncVideoPackets,  // Received since the start.
  kSyncVideoLost,     // Lost since the start.
  kSyncVideoDelayMs,  // What video waits so that lips and voice go together.
};

}  // namespace

VideoReceiver::VideoReceiver(const CallContext& call)
    : Component("video receiver", call), m_statistics(call.callId), m_settings(makeSettings()) {
  m_settings.Follow(kTargetFps, Way::kPosted, m_fps);
}

void VideoReceiver::work(RunTime now, double elapsed) {
  const Link::Traffic traffic = m_call.link.Received(Media::kVideo);
  const std::uint32_t packets = traffic.received - m_seen.received;
  const std::uint32_t lost = traffic.lost - m_seen.lost;
  m_received.Add(traffic.bits - m_seen.bits, elapsed);
  m_seen = traffic;
  if (packets + lost > 0) {
    m_complete += (static_cast<double>(packets) / (packets + lost) - m_complete) * kCompleteWeight;
  }

  kal::_tagSyncStatistics sync{};
  sync.value[kSyncVideoBitrate] = static_cast<std::uint32_t>(m_received.PerSecond());
  sync.value[kSyncVideoFps] =
      static_cast<std::uint32_t>(std::clamp<int>(m_fps, 0, kMostFps) * m_complete * 100);
  sync.value[kSyncVideoPackets] = traffic.received;
  sync.value[kSyncVideoLost] = traffic.lost;
  const double wait = m_settings.ReadComputed(kPlayoutDelayMs) - m_call.link.Now(now).delayMs;
  sync.value[kSyncVideoDelayMs] = wait > 0 ? static_cast<std::uint32_t>(wait) : 0;
  m_statistics->updateAVSyncStatistics(0, sync);
  ++m_call.recorder.statisticsWrites;
}

}  // namespace simulate
