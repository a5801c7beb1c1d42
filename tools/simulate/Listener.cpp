// SPDX-License-Identifier: Apache-2.0
#include "simulate/Listener.h"

#include "simulate/Keys.h"

namespace simulate {

namespace {

constexpr const ConfigKey<int>* kNumbers[] = {&kExpectedLoss, &kAudioTarget,     &kVideoTarget,   &kTargetFps,
                                              &kActiveLayers, &kTargetBandwidth, &kJitterTargetMs};
constexpr const ConfigKey<bool>* kFlags[] = {&kAudioFec, &kRetransmissionFec};

}  // namespace

Listener::Listener(const CallContext& call, Way way)
    : Component("listener", call), m_settings(makeSettings()) {
  for (const auto* key : kNumbers) m_settings.Subscribe<int>(*key, way, [this](int) { notice(); });
  for (const auto* key : kFlags) m_settings.Subscribe<bool>(*key, way, [this](bool) { notice(); });
}

void Listener::work(RunTime, double) {
  if (!m_isNotified.exchange(false)) return;
  for (const auto* key : kNumbers) m_settings.Read(*key);
  for (const auto* key : kFlags) m_settings.Read(*key);
}

}  // namespace simulate
