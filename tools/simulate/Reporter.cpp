// SPDX-License-Identifier: Apache-2.0
#include "simulate/Reporter.h"

#include <algorithm>

#include "simulate/Keys.h"
#include "simulate/SyncRecord.h"

namespace simulate {

namespace {

// A long run is read less often, so that its report keeps its size.
double IntervalOf(double plannedSeconds) {
  return std::max(std::min(0.1, plannedSeconds / 10), plannedSeconds / 300);
}

}  // namespace

Reporter::Reporter(const CallContext& call)
    : Component("reporter", call),
      m_intervalSeconds(IntervalOf(call.recorder.PlannedSeconds())),
      m_audio(call.callId),
      m_video(call.callId),
      m_settings(makeSettings()) {
  m_settings.Follow(kTargetBandwidth, Way::kDirect, m_bandwidth);
}

void Reporter::ReadLast() {
  read(m_call.recorder.Now());
}

void Reporter::work(RunTime now, double) {
  if (Seconds(now - m_lastRead) >= m_intervalSeconds) read(now);
}

void Reporter::read(RunTime now) {
  kalStore::st_KalVideoTxBlock video;
  kalStore::st_KalAudioBlock sent;
  kalStore::st_KalAudioBlock received;
  kal::_tagSyncStatistics sync;
  m_video->GetTxMediaInfo(&video, true);
  m_audio->GetTxMediaInfo(&sent, true);
  m_audio->GetRxAudioInfo(&received, 0, true);
  m_audio->GetAVSyncInfo(&sync, 0);
  m_call.recorder.statisticsReads += 4;
  m_call.recorder.framesReported += video.layer[0].counterDelta;

  const double elapsed = Seconds(now - m_lastRead);
  m_lastRead = now;
  if (elapsed < m_intervalSeconds / 2) return;  // The last read: too short for figures per second.

  const Packets audioPackets{received.jitterStat40.Value(), received.jitterStat48};
  const Packets videoPackets{sync.value[kSyncVideoPackets], sync.value[kSyncVideoLost]};
  const auto perSecond = [&](std::uint64_t count, std::uint64_t before) {
    return static_cast<double>(count - before) / elapsed;
  };
  m_samples.push_back({.seconds = Seconds(now),
                       .capacity = m_call.link.Now(now).capacity,
                       .bandwidth = static_cast<double>(m_bandwidth),
                       .audioSent = static_cast<double>(sent.bitrate),
                       .audioReceived = static_cast<double>(received.bitrate),
                       .videoSent = video.encoderBitrate,
                       .videoReceived = static_cast<double>(sync.value[kSyncVideoBitrate]),
                       .targetFps = video.layer[0].targetFps,
                       .sentFps = video.encoderFps,
                       .receivedFps = sync.value[kSyncVideoFps] / 100.0,
                       .pictureHeight = static_cast<double>(video.encodedHeight),
                       .audioPackets = perSecond(audioPackets.received, m_seenAudio.received),
                       .videoPackets = perSecond(videoPackets.received, m_seenVideo.received),
                       .audioLost = perSecond(audioPackets.lost, m_seenAudio.lost),
                       .videoLost = perSecond(videoPackets.lost, m_seenVideo.lost),
                       .jitterMs = static_cast<double>(received.jitterBytes.jitter1),
                       .bufferMs = static_cast<double>(received.stat112),
                       .endToEndMs = static_cast<double>(received.e2eDelay[0])});
  m_seenAudio = audioPackets;
  m_seenVideo = videoPackets;
}

}  // namespace simulate
