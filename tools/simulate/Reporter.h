// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "simulate/Component.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// What the statistics blocks of a call say at a moment.
struct Sample {
  double seconds;                   ///< Since the run began.
  double capacity;                  ///< Of the link, bit/s.
  double bandwidth;                 ///< What the controller takes it to be, bit/s.
  double audioSent, audioReceived;  ///< bit/s
  double videoSent, videoReceived;  ///< bit/s
  double targetFps, sentFps, receivedFps;
  double pictureHeight;               ///< Lines.
  double audioPackets, videoPackets;  ///< Received per second.
  double audioLost, videoLost;        ///< Per second.
  double jitterMs, bufferMs, endToEndMs;
};

/// Reads the statistics of the call with reset, in equal intervals.
class Reporter : public Component {
 public:
  explicit Reporter(const CallContext& call);

  /// Reads what is left. Only when nothing runs in the call any more; then also Samples().
  void ReadLast();
  const std::vector<Sample>& Samples() const { return m_samples; }

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }
  void read(RunTime now);

  const double m_intervalSeconds;
  RunTime m_lastRead = 0;
  std::atomic<int> m_bandwidth{0};
  struct Packets {
    std::uint64_t received = 0;
    std::uint64_t lost = 0;
  };
  Packets m_seenAudio;
  Packets m_seenVideo;
  std::vector<Sample> m_samples;
  kalStore::StatsRef<kalStore::AudioStats> m_audio;
  kalStore::StatsRef<kalStore::VideoStats> m_video;
  CallSettings m_settings;
};

}  // namespace simulate
