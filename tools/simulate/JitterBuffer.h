// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "simulate/Component.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Keeps received voice for as long as the link's jitter asks for, within the limits of the settings, and
/// notifies the receivers for how long.
class JitterBuffer : public Component {
 public:
  explicit JitterBuffer(const CallContext& call);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }

  std::atomic<int> m_minDelayMs{20};
  std::atomic<int> m_maxDelayMs{300};
  std::atomic<double> m_playoutMs{60};
  double m_targetMs = 60;
  Link::Traffic m_seen;
  kalStore::StatsRef<kalStore::AudioStats> m_statistics;
  CallSettings m_settings;
};

}  // namespace simulate
