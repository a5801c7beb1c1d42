// SPDX-License-Identifier: Apache-2.0
#include "simulate/Component.h"

#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "tessel/journal.h"
#include "tessel/post.h"

namespace simulate {

void Component::Start() {
  if (const int error = m_thread.Start(); error != 0) {
    throw std::runtime_error(std::string("no thread for a component: ") +
                             std::generic_category().message(error));
  }
  m_lastTick = m_call.recorder.Now();
  settings().Join(m_call.callId);
}

void Component::Tick() {
  if (m_isTickPending.exchange(true)) return;
  Post([this] {
    m_isTickPending = false;
    const RunTime now = m_call.recorder.Now();
    const double elapsed = Seconds(now - m_lastTick);
    m_lastTick = now;
    work(now, elapsed);
    ++m_ticks;
  });
}

void Component::Post(std::function<void()> task) {
  kalStore::Post(m_thread, [this, task = std::move(task)] {
    const kalStore::JournalOrigin origin(m_name);
    task();
  });
}

void Component::Drain() {
  kalStore::Send(m_thread, [] {});
}

}  // namespace simulate
