// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <limits>

#include "EventList.h"
#include "Mutex.h"
#include "util/ICmEventQueue.h"

namespace cm::internal {

class Completion;

/// The event queue of an ACmThread, which runs the loop.
///
/// Arrivals go through one word, the inbox: a pointer to the latest arrival, each linked to the one before
/// it, with two flags in the pointer's low bits, which alignment keeps at 0. One compare-and-exchange
/// therefore decides whether an event is accepted, queues it, and finds out whether the loop must be woken.
/// The bench rows Post<Tessel> and Post<Locked> show what that saves over a deque under a mutex.
///
/// The word, and what each operation makes of it. "^": it does not change; "-": cannot occur.
///
///   word                push()          takeArrivals()   sleep()            Close()
///   0                   event           ^                kSleeping, waits   kClosed
///   event               event           0                ^                  event|kClosed
///   kSleeping           event, wakes    -                -                  kSleeping|kClosed, wakes
///   event|kClosed       ^, refused      kClosed          ^                  ^
///   kSleeping|kClosed   ^, refused      -                -                  ^
///   kClosed             ^, refused      ^                ^                  ^
///
/// push() and Close() run on any thread, the other two on the loop's. The loop ends in the last two states;
/// only Open() leaves them, by storing 0, and ACmThread never runs Open() and Close() at the same time.
///
/// Memory orders of the inbox:
/// - push() releases, takeArrivals() acquires: the loop sees what the posting thread wrote, the event's links
///   included. Every later push() and Close() is a read-modify-write, and so continues the release sequence:
///   one acquire of the latest word is enough for all events in it.
/// - takeArrivals() releases, push() acquires: see announce().
/// - Open() releases, IsOpen() acquires: whoever sees the queue open sees the thread's id.
/// - Everything else is relaxed: the word alone decides there, and its modification order has one event
///   accepted either before Close() or not at all.
///
/// An event's address may come back while a push() is between its load and its exchange (the ABA problem).
/// That does no harm: the exchange then links to the event that has this address now, and it is the latest.
class EventQueue final : public ICmEventQueue {
 public:
  EventQueue() = default;
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  int PostEvent(ICmEvent* event, unsigned int priority, unsigned int flags) override;
  int SendEvent(ICmEvent* event, unsigned int flags) override;

  /// Accepts events from now on. Called by the thread that calls Run() next. REQUIRES: closed, as when
  /// constructed, and no event left.
  void Open();
  /// Fires events on the calling thread until Close() has been called and all that was queued has fired. An
  /// event that ends the thread (pthread_exit) closes the queue; what is left in it ends without firing.
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
  static_assert(alignof(ICmEvent) > kFlags);

  static constexpr unsigned int kNoArrival = std::numeric_limits<unsigned int>::max();

  bool push(ICmEvent* event, unsigned int priority, Completion* sender);
  void announce(unsigned int priority);
  void release(Completion* sender, int result);
  ICmEvent* next();
  void takeArrivals();
  void sleep();
  void wake();

  // On cache lines of their own: posting threads write the first two while the loop works.
  alignas(64) std::atomic<std::uintptr_t> m_inbox{kClosed};
  // No arrival in the inbox has a smaller number, so that the loop need not look at them before each event.
  alignas(64) std::atomic<unsigned int> m_bestArrival{kNoArrival};
  alignas(64) std::atomic<unsigned long> m_threadId{0};
  EventList m_ready;  // The loop's own.
  Mutex m_sleepMutex;
  std::condition_variable m_wake;
};

}  // namespace cm::internal
