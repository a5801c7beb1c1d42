#pragma once

#include <memory>

#include "util/ICmEventQueue.h"
#include "util/export.h"

/// The calling thread's id: never 0, unique among running threads, comparable with ACmThread::GetThreadId().
UTIL_API unsigned long GetThreadSelfId();

/// A thread with an event loop.
///
/// Threads: every operation may be called from any thread, but the destructor by one owner only, once no
/// other call to the thread or its queue is under way, and neither the destructor nor Stop() from the thread
/// itself (Stop() then returns EDEADLK and does nothing). Lifetime: a queue pointer stays valid until the
/// thread object is destroyed. After Stop() it refuses events; after the next Start() it takes them again.
class UTIL_API ACmThread {
 public:
  /// `name` (copied, may be null) is shown by debuggers, cut to 15 characters. Without `bEventQueue` the
  /// thread runs, but has no queue.
  explicit ACmThread(const char* name = nullptr, bool bEventQueue = true);
  /// Stops the thread, see Stop().
  ~ACmThread();
  ACmThread(const ACmThread&) = delete;
  ACmThread& operator=(const ACmThread&) = delete;

  /// Starts the thread and returns once it runs. 0; EBUSY when it already runs; another errno value when the
  /// system refuses a thread. A stopped thread can be started again.
  int Start();

  /// Refuses further events, runs what is queued, then joins. 0, also when the thread does not run. Several
  /// threads may call at once: each returns when the thread has ended.
  int Stop();

  /// The id of the running thread; 0 when it does not run.
  unsigned long GetThreadId() const;

  /// The queue between Start() and Stop(); null otherwise, or when made without one.
  ICmEventQueue* GetEventQueue();

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};
