#pragma once

#include "util/export.h"

namespace cm {
class Completion;
class EventList;
class EventQueue;
}  // namespace cm

/// Work for a thread's event queue. Made with new and given to one queue, once; that queue owns it from then
/// on.
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
  /// @param id  the caller's own; the queue reads no meaning into it
  explicit ICmEvent(unsigned long id = 0);
  ICmEvent(const ICmEvent&) = delete;
  ICmEvent& operator=(const ICmEvent&) = delete;

  /// Does the work, on the queue's thread.
  /// @return The event's own; the queue reads no meaning into it.
  virtual int OnEventFire() = 0;
  /// Ends the event: called once by the queue, fired or refused. Deletes the event. Must not throw.
  virtual void OnDestorySelf();

  /// @return The id given.
  unsigned long GetEventId() const { return m_id; }

  virtual ~ICmEvent();

 private:
  friend class cm::EventList;
  friend class cm::EventQueue;

  const unsigned long m_id;
  // The queue's links live in the event, so that queueing allocates nothing and cannot fail.
  ICmEvent* m_next = nullptr;
  ICmEvent* m_lastOfRun = nullptr;
  cm::Completion* m_sender = nullptr;
  unsigned int m_priority = 0;
};
