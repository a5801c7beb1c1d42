// SPDX-License-Identifier: Apache-2.0
#include "simulate/Call.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "simulate/AudioReceiver.h"
#include "simulate/AudioSender.h"
#include "simulate/CallSettings.h"
#include "simulate/Listener.h"
#include "simulate/VideoReceiver.h"
#include "simulate/VideoSender.h"

namespace simulate {

template <class T, class... Arguments>
T* Call::add(Arguments... arguments) {
  auto component =
      std::make_unique<T>(CallContext{m_store.CallId(), m_recorder, m_ledger, *m_link}, arguments...);
  T* const added = component.get();
  m_components.push_back(std::move(component));
  return added;
}

Call::Call(std::uint32_t callId, unsigned listeners, Recorder& recorder, std::unique_ptr<Link> link,
           const SettingsDocument* document)
    : m_store(callId, kalStore::CallStore::kEndsCall),
      m_link(std::move(link)),
      m_recorder(recorder),
      m_ledger(recorder) {
  if (document != nullptr) {
    CallSettings application(m_ledger, m_recorder);
    application.Join(callId);
    application.Apply(*document);
  }
  m_controller = add<BandwidthController>();
  add<JitterBuffer>();
  add<AudioSender>();
  add<AudioReceiver>();
  add<VideoSender>();
  add<VideoReceiver>();
  m_reporter = add<Reporter>();
  for (unsigned listener = 0; listener < listeners; ++listener) {
    add<Listener>(kWays[listener % kWays.size()]);
  }
  for (const auto& component : m_components) component->Start();
}

Call::~Call() {
  quiesce();
}

void Call::Tick() {
  for (const auto& component : m_components) component->Tick(m_recorder.Now());
}

unsigned Call::Ticks() const {
  unsigned least = std::numeric_limits<unsigned>::max();
  for (const auto& component : m_components) least = std::min(least, component->Ticks());
  return least;
}

void Call::Finish() {
  quiesce();
  m_reporter->ReadLast();
}

// Setters come before those whom they notify, but a setter may have posted to itself: hence twice.
void Call::quiesce() {
  for (int round = 0; round < 2; ++round) {
    for (const auto& component : m_components) component->Drain();
  }
}

}  // namespace simulate
