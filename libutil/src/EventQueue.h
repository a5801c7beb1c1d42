#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>

#include "EventList.h"
#include "util/ICmEventQueue.h"

namespace cm {

class Completion;

/// The event queue of an ACmThread, which runs the loop.
///
/// What arrives is one word, the inbox: a pointer to the latest arrival, each linked to the one before it,
/// and two flags in the pointer's low bits. So posting is one exchange of that word, whatever the loop is
/// doing:
///
///              post or send     loop finds nothing ready    Close()
/// Open         Open             Sleeping                    Closed
/// Sleeping     Open, wakes      -                           Closed, wakes
/// Closed       refused          Run() returns               Closed
class EventQueue final : public ICmEventQueue {
 public:
  EventQueue() = default;
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  int PostEvent(ICmEvent* event, unsigned int priority, unsigned int flags) override;
  int SendEvent(ICmEvent* event, unsigned int flags) override;

  /// Accepts events from now on. Called by the thread that calls Run() next. REQUIRES: closed, as at the
  /// start.
  void Open();
  /// Fires events on the calling thread until Close() was called and what was queued before has fired.
  void Run();
  /// Refuses events from now on.
  void Close();

  bool IsOpen() const;
  /// The id of the thread between Open() and the end of Run(), else 0.
  unsigned long ThreadId() const { return m_threadId.load(std::memory_order_relaxed); }

 private:
  static constexpr std::uintptr_t kClosed = 1;
  static constexpr std::uintptr_t kSleeping = 2;
  static constexpr std::uintptr_t kFlags = kClosed | kSleeping;

  static constexpr unsigned int kNoArrival = std::numeric_limits<unsigned int>::max();

  bool push(ICmEvent* event, unsigned int priority, Completion* sender);
  void announce(unsigned int priority);
  ICmEvent* next();
  void takeArrivals();
  void sleep();
  void wake();

  // On cache lines of their own: posting threads write them while the loop works.
  alignas(64) std::atomic<std::uintptr_t> m_inbox{kClosed};
  // No arrival goes before this priority, so that the loop need not look at the inbox before each event.
  alignas(64) std::atomic<unsigned int> m_bestArrival{kNoArrival};
  alignas(64) std::atomic<unsigned long> m_threadId{0};
  EventList m_ready;  // The loop's own.
  std::mutex m_sleepMutex;
  std::condition_variable m_wake;
};

}  // namespace cm
