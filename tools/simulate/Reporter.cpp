// SPDX-License-Identifier: Apache-2.0
#include "simulate/Reporter.h"

namespace simulate {

namespace {

constexpr double kReportSeconds = 0.1;

}  // namespace

Reporter::Reporter(const CallContext& call)
    : Component("reporter", call), m_audio(call.callId), m_video(call.callId), m_settings(makeSettings()) {}

void Reporter::work(RunTime, double elapsed) {
  m_sinceLast += elapsed;
  if (m_sinceLast < kReportSeconds) return;
  m_sinceLast = 0;
  read();
}

void Reporter::read() {
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
}

}  // namespace simulate
