// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <utility>

#include "util/util.h"

/// How many events of a group have fired and ended.
struct EventCounts {
  std::atomic<int> fired{0};
  std::atomic<int> ended{0};
};

/// Runs a function when it fires, and counts.
class CountedEvent : public ICmEvent {
 public:
  explicit CountedEvent(EventCounts& counts, std::function<void()> work = nullptr, unsigned long id = 0)
      : ICmEvent(id), m_counts(counts), m_work(std::move(work)) {}

  int OnEventFire() override {
    ++m_counts.fired;
    if (m_work) m_work();
    return 0;
  }

 protected:
  ~CountedEvent() override { ++m_counts.ended; }

 private:
  EventCounts& m_counts;
  std::function<void()> m_work;
};

/// Holds a queue's thread inside an event, from construction until opened.
class Gate {
 public:
  explicit Gate(ICmEventQueue& queue) {
    std::promise<void> entered;
    const auto counts = std::make_shared<EventCounts>();  // The event may end after the gate.
    queue.PostEvent(new CountedEvent(*counts,
                                     [counts, &entered, open = m_open.get_future().share()] {
                                       entered.set_value();
                                       open.wait();
                                     }),
                    0, 0);
    entered.get_future().wait();
  }
  void Open() { m_open.set_value(); }

 private:
  std::promise<void> m_open;
};
