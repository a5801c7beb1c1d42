#pragma once

#include "util/ICmEvent.h"
#include "util/export.h"

/// The event queue of one ACmThread. Any thread may post and send.
///
/// A queue owns an event from the call on, whatever the call returns: it fires the event at most once, on its
/// own thread, and ends it once with OnDestorySelf(). A stopped queue refuses: it fires nothing, still ends
/// the event on the calling thread, and returns a code other than 0. What was queued before still fires.
///
/// An exception that leaves OnEventFire() ends neither the thread nor the wait of a sender; a trace line of
/// level 0 tells of it.
class UTIL_API ICmEventQueue {
 public:
  static constexpr unsigned int kDefaultPriority = 128;

  /// Queues the event and returns at once; allocates nothing. A smaller number is a higher priority; events
  /// of equal priority fire in the order in which they were posted. `flags` is reserved; pass 0. Returns 0;
  /// EINVAL for a null event; ESHUTDOWN when the queue has stopped.
  virtual int PostEvent(ICmEvent* event, unsigned int priority, unsigned int flags) = 0;

  /// Queues the event at the default priority and waits until it has fired and ended. From the queue's own
  /// thread it fires at once. `flags` is reserved; pass 0. The wait has no ceiling while the thread runs: the
  /// caller must not hold what the event needs.
  /// Returns 0; EINVAL for a null event; ESHUTDOWN when the queue has stopped; ECANCELED when OnEventFire()
  /// threw.
  virtual int SendEvent(ICmEvent* event, unsigned int flags) = 0;

 protected:
  ~ICmEventQueue() = default;
};
