// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "simulate/Component.h"
#include "simulate/Rate.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Plays received voice after the delay that the jitter buffer directly notifies it of.
class AudioReceiver : public Component {
 public:
  explicit AudioReceiver(const CallContext& call);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }

  std::atomic<int> m_bufferDelayMs{60};
  std::atomic<bool> m_hasFec{false};
  double m_seenBits = 0;
  Rate m_received;
  kalStore::StatsRef<kalStore::AudioStats> m_statistics;
  CallSettings m_settings;
};

}  // namespace simulate
