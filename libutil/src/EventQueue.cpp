// SPDX-License-Identifier: Apache-2.0
#include "EventQueue.h"

#include <cerrno>
#include <exception>

#include "BriefWait.h"
#include "Completion.h"
#include "util/ACmThread.h"
#include "util/CCmTextFormator.h"
#include "util/util_trace.h"

namespace cm::internal {
namespace {

int Refuse(ICmEvent* event, int code) {
  event->OnDestorySelf();
  return code;
}

void ReportException(const ICmEvent& event, const char* what) {
  if (get_external_trace_mask() < 0) return;
  char buffer[1024];
  CCmTextFormator line(buffer, sizeof buffer);
  line << "ACmThread, OnEventFire threw, eventId=" << event.GetEventId() << ", what=" << what;
  util_adapter_trace(0, "UTIL", line, line.tell());
}

/// Fires and ends the event; 0, or ECANCELED when it threw. Is unwound when the event ends its thread.
int Fire(ICmEvent* event) {
  const struct End {
    ICmEvent& event;
    ~End() { event.OnDestorySelf(); }
  } end{*event};
  try {
    event->OnEventFire();
    return 0;
  } catch (const std::exception& error) {
    ReportException(*event, error.what());
  } catch (...) {
    // pthread_exit arrives here, too, without an exception object: the C library wants it passed on.
    if (std::current_exception() == nullptr) throw;
    ReportException(*event, "not a std::exception");
  }
  return ECANCELED;
}

ICmEvent* EventIn(std::uintptr_t inbox, std::uintptr_t flags) {
  return reinterpret_cast<ICmEvent*>(inbox & ~flags);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

int EventQueue::PostEvent(ICmEvent* event, unsigned int priority, unsigned int) {
  if (event == nullptr) return EINVAL;
  return push(event, priority, nullptr) ? 0 : Refuse(event, ESHUTDOWN);
}

int EventQueue::SendEvent(ICmEvent* event, unsigned int) {
  if (event == nullptr) return EINVAL;
  if (ThreadId() == GetThreadSelfId()) return IsOpen() ? Fire(event) : Refuse(event, ESHUTDOWN);
  Completion completion;
  return push(event, kDefaultPriority, &completion) ? completion.Wait() : Refuse(event, ESHUTDOWN);
}

void EventQueue::Open() {
  m_threadId.store(GetThreadSelfId(), std::memory_order_relaxed);
  m_inbox.store(0, std::memory_order_release);
}

void EventQueue::Run() {
  while (ICmEvent* event = next()) {
    Completion* const sender = event->m_sender;
    try {
      release(sender, Fire(event));
    } catch (...) {
      // The event ends the thread: nothing more fires, but every event ends, and every sender is released.
      Close();
      release(sender, ECANCELED);
      while (ICmEvent* left = next()) {
        Completion* const leftSender = left->m_sender;
        release(leftSender, Refuse(left, ESHUTDOWN));
      }
      m_threadId.store(0, std::memory_order_relaxed);
      throw;
    }
  }
  m_threadId.store(0, std::memory_order_relaxed);
}

void EventQueue::release(Completion* sender, int result) {
  if (sender == nullptr) return;
  // The event may have been one that ends the queue, which the sender has to be done with before.
  if (!IsOpen()) sender->AwaitWaiter();
  sender->Complete(result);
}

void EventQueue::Close() {
  // The loop's own thread takes no lock: in a forked child, another one of the parent may hold it for ever.
  if ((m_inbox.fetch_or(kClosed, std::memory_order_relaxed) & kSleeping) != 0) wake();
}

bool EventQueue::IsOpen() const {
  return (m_inbox.load(std::memory_order_acquire) & kClosed) == 0;
}

bool EventQueue::push(ICmEvent* event, unsigned int priority, Completion* sender) {
  event->m_priority = priority;
  event->m_sender = sender;
  std::uintptr_t inbox = m_inbox.load(std::memory_order_relaxed);
  do {
    if ((inbox & kClosed) != 0) return false;
    event->m_next = EventIn(inbox, kFlags);
    // Release: the loop that takes the event sees what was written to it. Acquire: see announce().
  } while (!m_inbox.compare_exchange_weak(inbox, reinterpret_cast<std::uintptr_t>(event),
                                          std::memory_order_acq_rel, std::memory_order_relaxed));
  announce(priority);
  if ((inbox & kSleeping) != 0) wake();
  return true;
}

void EventQueue::announce(unsigned int priority) {
  // After the exchange in push(), whose acquire pairs with the release in takeArrivals(): an event that was
  // not taken finds the value already reset, so the reset cannot undo this. An event that was taken at worst
  // makes the loop look in vain. Relaxed, because the loop takes what it needs from the inbox.
  unsigned int best = m_bestArrival.load(std::memory_order_relaxed);
  while (priority < best && !m_bestArrival.compare_exchange_weak(best, priority, std::memory_order_relaxed)) {
  }
}

ICmEvent* EventQueue::next() {
  for (;;) {
    if (!m_ready.IsEmpty()) {
      // Arrivals wait until all that is ready has fired, except those that go before it.
      if (m_bestArrival.load(std::memory_order_relaxed) < m_ready.FirstPriority()) takeArrivals();
      return m_ready.Pop();
    }
    const std::uintptr_t inbox = m_inbox.load(std::memory_order_relaxed);
    if (EventIn(inbox, kFlags) != nullptr) {
      takeArrivals();
      continue;
    }
    if ((inbox & kClosed) != 0) return nullptr;
    sleep();
  }
}

void EventQueue::takeArrivals() {
  m_bestArrival.store(kNoArrival, std::memory_order_relaxed);
  ICmEvent* latest = EventIn(m_inbox.fetch_and(kClosed, std::memory_order_acq_rel), kFlags);
  ICmEvent* earliest = nullptr;
  while (latest != nullptr) {
    ICmEvent* before = latest->m_next;
    latest->m_next = earliest;
    earliest = latest;
    latest = before;
  }
  while (earliest != nullptr) {
    ICmEvent* after = earliest->m_next;
    m_ready.Insert(earliest);
    earliest = after;
  }
}

void EventQueue::sleep() {
  if (WaitBriefly([this] { return m_inbox.load(std::memory_order_relaxed) != 0; })) return;
  Lock lock(m_sleepMutex);
  std::uintptr_t empty = 0;
  if (!m_inbox.compare_exchange_strong(empty, kSleeping, std::memory_order_relaxed)) return;
  while (m_inbox.load(std::memory_order_relaxed) == kSleeping) lock.Wait(m_wake);
}

void EventQueue::wake() {
  // sleep() holds the lock from setting kSleeping until it waits, so this notification is not lost.
  const Lock lock(m_sleepMutex);
  m_wake.notify_one();
}

}  // namespace cm::internal
