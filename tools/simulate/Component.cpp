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
  settings().Join(m_call.callId);
}

void Component::Tick(RunTime now) {
  if (m_isTickPending.exchange(true)) return;
  Post([this, now] {
    m_isTickPending = false;
    work(now, Seconds(now - std::exchange(m_lastTick, now)));
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
