// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "simulate/Component.h"
#include "simulate/Rate.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Shows received video in step with the voice, whose delay it asks the jitter buffer for.
class VideoReceiver : public Component {
 public:
  explicit VideoReceiver(const CallContext& call);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }

  std::atomic<int> m_fps{30};
  Link::Traffic m_seen;
  Rate m_received;
  double m_complete = 0;  // The share of pictures, as of late.
  kalStore::StatsRef<kalStore::AudioStats> m_statistics;
  CallSettings m_settings;
};

}  // namespace simulate
