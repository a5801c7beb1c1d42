#pragma once

/// @file
/// Threads with an event loop, and the calling thread's id.

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

/// A thread with an event loop.
///
/// @threads Every operation may be called from any thread, but the destructor by one owner only, once no
/// other call to the thread or its queue is under way, and neither the destructor nor Stop() from the thread
/// itself (Stop() then returns EDEADLK and does nothing).
/// @lifetime A queue pointer stays valid until the thread object is destroyed. After Stop() it refuses
/// events; after the next Start() it takes them again.
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
  /// @param name  copied, may be null; shown by debuggers, cut to 15 characters
  /// @param bEventQueue  false: the thread runs, but has no queue
  explicit ACmThread(const char* name = nullptr, bool bEventQueue = true);
  /// Stops the thread, see Stop().
  /// @invalidates The thread's queue.
  ~ACmThread();
  ACmThread(const ACmThread&) = delete;
  ACmThread& operator=(const ACmThread&) = delete;

  /// Starts the thread and returns once it runs. A stopped thread can be started again.
  /// @return 0; EBUSY when it already runs; another errno value when the system refuses a thread.
  int Start();

  /// Refuses further events, runs what is queued, then joins. Several threads may call at once: each returns
  /// when the thread has ended. The wait has no ceiling.
  /// @return 0, also when the thread does not run; EDEADLK from the thread itself.
  int Stop();

  /// @return The id of the running thread; 0 when it does not run.
  unsigned long GetThreadId() const;

  /// @return The queue between Start() and Stop(); null otherwise, or when made without one.
  ICmEventQueue* GetEventQueue();

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};
