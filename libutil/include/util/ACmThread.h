// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Threads with an event queue, and the calling thread's id.

#include <memory>

#include "util/ICmEventQueue.h"
#include "util/export.h"

/// Identifies the calling thread.
/// @return An id: never 0, unique among running threads, comparable with ACmThread::GetThreadId().
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// ACmThread worker("worker");
/// worker.Start();
/// assert(worker.GetThreadId() != GetThreadSelfId());
/// @endcode
UTIL_API unsigned long GetThreadSelfId();

/// A thread that fires the events of a queue. Cancellation (pthread_cancel) is disabled on it.
///
/// @threads Any thread may call every operation at any time. One owner destroys the object, while no other
/// call to it or to its queue is under way.
/// @lifetime A queue pointer is valid until the object is destroyed. After Stop() the queue refuses events;
/// after the next Start() it accepts them again.
/// @par Example
/// @code{.cpp}
/// struct Hello : ICmEvent {
///   int OnEventFire() override { return std::puts("hello from the worker") < 0; }
/// };
/// ACmThread worker("worker");
/// assert(worker.Start() == 0);
/// worker.GetEventQueue()->PostEvent(new Hello, ICmEventQueue::kDefaultPriority, 0);
/// assert(worker.Stop() == 0);  // when it returns, the event has fired
/// assert(worker.GetEventQueue() == nullptr);
/// @endcode
class UTIL_API ACmThread {
 public:
  /// Does not start the thread.
  /// @param name  copied, may be null; debuggers show it, cut to 15 characters
  /// @param bEventQueue  false: the thread runs, but has no queue
  explicit ACmThread(const char* name = nullptr, bool bEventQueue = true);
  /// Stops the thread, see Stop(). In an event of the thread itself, which cannot wait for its own end:
  /// refuses further events and returns; the thread fires what is queued and then ends by itself. Send such
  /// an event rather than post it: another thread's PostEvent() may still be under way while the event fires.
  /// @invalidates The thread's queue.
  ~ACmThread();
  ACmThread(const ACmThread&) = delete;
  ACmThread& operator=(const ACmThread&) = delete;

  /// Starts the thread and returns once it runs. A stopped thread can be started again.
  /// @return 0; EBUSY when it already runs; another errno value when the system refuses a thread.
  int Start();

  /// Refuses further events, fires what is queued, and waits for the thread's end, destructors of its
  /// thread-local objects included. Several threads may call at once; each returns when the thread has ended.
  /// The wait has no time limit and is no cancellation point.
  /// @return 0, also when the thread does not run; EDEADLK, and nothing has changed, when the thread itself
  /// calls, from an event as well as from the destructor of a thread-local object.
  int Stop();

  /// @return The thread's id from Start() until what was queued when it stopped has fired; otherwise 0.
  unsigned long GetThreadId() const;

  /// @return The queue between Start() and Stop(); null otherwise, or when made without one.
  ICmEventQueue* GetEventQueue();

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};
