// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "simulate/Component.h"
#include "simulate/Rate.h"

namespace simulate {

/// Estimates what the link carries, and divides it: sets what the senders are to do, within the limits of the
/// settings.
class BandwidthController : public Component {
 public:
  explicit BandwidthController(const CallContext& call);

  /// Has a document applied that has arrived during the call, on the controller's thread. The document must
  /// outlive the component.
  void Receive(const SettingsDocument& document);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }
  void estimate(const Link::State& link, double elapsed);
  void divide(const Link::State& link);

  std::atomic<int> m_minBandwidth{50000};
  std::atomic<int> m_maxBandwidth{4000000};
  std::atomic<int> m_maxFps{30};
  double m_sinceLast = 0;
  double m_estimate = 0;
  double m_seenBits = 0;
  Rate m_carried;
  CallSettings m_settings;
};

}  // namespace simulate
