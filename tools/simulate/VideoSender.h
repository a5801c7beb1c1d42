// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "simulate/Component.h"
#include "simulate/Rate.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Encodes and sends video in layers, at the bit rate and frame rate that the controller posts.
class VideoSender : public Component {
 public:
  explicit VideoSender(const CallContext& call);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }
  void report(std::uint32_t frames, double bitsPerFrame);

  std::atomic<int> m_bitrate{600000};
  std::atomic<int> m_fps{30};
  std::atomic<int> m_layers{1};
  std::atomic<bool> m_hasFec{false};
  double m_owedFrames = 0;
  kalStore::st_KalVideoStreamStatInfo m_streams[kalStore::kVideoLayerCount]{};
  Rate m_sentBits;
  Rate m_sentFrames;
  kalStore::StatsRef<kalStore::VideoStats> m_statistics;
  CallSettings m_settings;
};

}  // namespace simulate
