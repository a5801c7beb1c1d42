// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "util/ICmEvent.h"

/// What the event queue of an ACmThread could be without atomics: a deque of events under a mutex, taken
/// whole by a loop that is woken only when it sleeps. No priorities.
class LockedThread {
 public:
  ~LockedThread() { Post(nullptr); }

  void Post(ICmEvent* event) {
    bool isAsleep = false;
    {
      const std::lock_guard lock(m_mutex);
      m_arrivals.push_back(event);
      isAsleep = m_isAsleep;
    }
    if (isAsleep) m_changed.notify_one();
  }

 private:
  void run() {
    std::deque<ICmEvent*> ready;
    for (;;) {
      {
        std::unique_lock lock(m_mutex);
        m_isAsleep = true;
        m_changed.wait(lock, [this] { return !m_arrivals.empty(); });
        m_isAsleep = false;
        ready.swap(m_arrivals);
      }
      for (; !ready.empty(); ready.pop_front()) {
        ICmEvent* const event = ready.front();
        if (event == nullptr) return;
        event->OnEventFire();
        event->OnDestorySelf();
      }
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<ICmEvent*> m_arrivals;
  bool m_isAsleep = false;
  std::jthread m_thread{[this] { run(); }};
};
