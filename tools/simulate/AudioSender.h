// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "simulate/Component.h"
#include "simulate/Rate.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Sends voice at the bit rate that the controller hands it.
class AudioSender : public Component {
 public:
  explicit AudioSender(const CallContext& call);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }

  std::atomic<int> m_bitrate{32000};
  std::atomic<int> m_expectedLoss{0};
  std::atomic<bool> m_hasFec{false};
  double m_owedFrames = 0;
  std::uint64_t m_frames = 0;
  Rate m_sent;
  kalStore::StatsRef<kalStore::AudioStats> m_statistics;
  CallSettings m_settings;
};

}  // namespace simulate
