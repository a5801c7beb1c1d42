// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "util/export.h"

namespace cm::internal {
class Completion;
class EventList;
class EventQueue;
}  // namespace cm::internal

/// Work for a thread's event queue. Made with new and passed to one queue, once, which owns it from then on.
///
/// @threads Made on any thread; fires on the queue's.
/// @lifetime Until the queue ends it with OnDestorySelf().
/// @par Example
/// @code{.cpp}
/// struct Add : ICmEvent {
///   Add(int& sum, int term) : m_sum(sum), m_term(term) {}
///   int OnEventFire() override { return m_sum += m_term; }
///   int& m_sum;
///   int m_term;
/// };
/// int sum = 0;
/// ACmThread worker;
/// worker.Start();
/// worker.GetEventQueue()->SendEvent(new Add(sum, 3), 0);
/// assert(sum == 3);
/// @endcode
class UTIL_API ICmEvent {
 public:
  /// @param id  for the caller's own use; the queue only prints it when OnEventFire() throws
  explicit ICmEvent(unsigned long id = 0);
  ICmEvent(const ICmEvent&) = delete;
  ICmEvent& operator=(const ICmEvent&) = delete;

  /// Does the work, on the queue's thread. When it ends that thread (pthread_exit), the queue stops as by
  /// ACmThread::Stop(), but what is left in it ends without firing.
  /// @return Any number; the queue ignores it.
  virtual int OnEventFire() = 0;
  /// Ends the event; the queue calls it once, on its own thread when the event has fired, on the calling
  /// thread when the event was refused. Deletes the event. Must not throw.
  virtual void OnDestorySelf();

  /// @return The id that the constructor was given.
  unsigned long GetEventId() const { return m_id; }

  virtual ~ICmEvent();

 private:
  friend class cm::internal::EventList;
  friend class cm::internal::EventQueue;

  const unsigned long m_id;
  // The queue's links are part of the event, so that queueing allocates nothing and cannot fail.
  ICmEvent* m_next = nullptr;
  ICmEvent* m_lastOfRun = nullptr;
  cm::internal::Completion* m_sender = nullptr;
  unsigned int m_priority = 0;
};
