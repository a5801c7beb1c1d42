// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "util/ICmEvent.h"
#include "util/export.h"

/// The event queue of one ACmThread.
///
/// A queue owns an event from the call on, whatever the call returns: it fires the event at most once, on its
/// own thread, and ends it once with OnDestorySelf(). From the moment ACmThread::Stop() is called, the queue
/// refuses events from every thread, its own included: a refused event does not fire, ends on the calling
/// thread, and the call returns a code other than 0. What was queued before still fires.
///
/// An exception that leaves OnEventFire() ends neither the thread nor the wait of a sender; a trace line of
/// level 0 reports it.
///
/// @threads Any thread may post and send.
/// @lifetime Until its ACmThread is destroyed.
/// @par Example
/// @code{.cpp}
/// struct Note : ICmEvent {
///   Note(std::string& text, char letter) : m_text(text), m_letter(letter) {}
///   int OnEventFire() override { return m_text += m_letter, 0; }
///   std::string& m_text;
///   char m_letter;
/// };
/// std::string text;
/// ACmThread worker;
/// worker.Start();
/// ICmEventQueue* const queue = worker.GetEventQueue();
/// queue->PostEvent(new Note(text, 'a'), ICmEventQueue::kDefaultPriority, 0);
/// assert(queue->SendEvent(new Note(text, 'b'), 0) == 0);
/// assert(text == "ab");
/// worker.Stop();
/// assert(queue->PostEvent(new Note(text, 'c'), ICmEventQueue::kDefaultPriority, 0) != 0);
/// assert(text == "ab");
/// @endcode
class UTIL_API ICmEventQueue {
 public:
  /// The priority of events without urgency, and of events that are sent.
  static constexpr unsigned int kDefaultPriority = 128;

  /// Queues the event and returns at once; allocates nothing. Events of equal priority fire in the order in
  /// which they were queued.
  /// @param event  made with new
  /// @param priority  any; a smaller number is a higher priority
  /// @param flags  reserved; pass 0
  /// @return 0; EINVAL for a null event; ESHUTDOWN when the queue has stopped.
  /// @invalidates `event`: it may have fired and ended already.
  virtual int PostEvent(ICmEvent* event, unsigned int priority, unsigned int flags) = 0;

  /// Queues the event at the default priority and waits until it has fired and ended. On the queue's own
  /// thread the event fires at once, before what is queued. The wait has no time limit: do not hold a lock
  /// that the event, or one before it, takes. It is no cancellation point.
  /// @param event  made with new
  /// @param flags  reserved; pass 0
  /// @return 0; EINVAL for a null event; ESHUTDOWN when the queue has stopped; ECANCELED when OnEventFire()
  /// threw, or ended its thread.
  /// @invalidates `event`.
  virtual int SendEvent(ICmEvent* event, unsigned int flags) = 0;

 protected:
  ~ICmEventQueue() = default;
};
