// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "simulate/Component.h"

namespace simulate {

/// A component more, for load: subscribes to everything that the controller and the jitter buffer set, all in
/// one way, and reads it back whenever the clock ticks.
class Listener : public Component {
 public:
  Listener(const CallContext& call, Way way);

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }
  void notice() { m_isNotified = true; }

  std::atomic<bool> m_isNotified{false};
  CallSettings m_settings;
};

}  // namespace simulate
