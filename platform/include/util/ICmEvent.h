#pragma once

#include "util/export.h"

namespace cm {
class Completion;
class EventList;
class EventQueue;
}  // namespace cm

/// Work for a thread's event queue. Made with new and given to one queue, once; that queue owns it from then
/// on.
class UTIL_API ICmEvent {
 public:
  explicit ICmEvent(unsigned long id = 0);
  ICmEvent(const ICmEvent&) = delete;
  ICmEvent& operator=(const ICmEvent&) = delete;

  /// Does the work, on the queue's thread. The queue reads no meaning into the value returned.
  virtual int OnEventFire() = 0;
  /// Ends the event: called once by the queue, fired or refused. Deletes the event. Must not throw.
  virtual void OnDestorySelf();

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
