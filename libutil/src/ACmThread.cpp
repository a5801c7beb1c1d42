// SPDX-License-Identifier: Apache-2.0
#include "util/ACmThread.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "Completion.h"
#include "EventQueue.h"
#include "Mutex.h"
#include "Uncancelled.h"

namespace {

// The ACmThread::Impl that the calling thread runs. Unlike the queue's thread id it stays set when the loop
// is over and destructors of thread-local objects run; it has no destructor itself, so all of them see it.
thread_local const void* t_running = nullptr;

}  // namespace

unsigned long GetThreadSelfId() {
  return pthread_self();
}

class ACmThread::Impl {
 public:
  Impl(const char* name, bool bEventQueue)
      : m_name(std::string_view(name == nullptr ? "" : name).substr(0, kLongestName)),
        m_hasQueue(bEventQueue) {}
  ~Impl() {
    if (isSelf()) t_running = nullptr;  // Another one may get this address.
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  int Start() {
    if (isSelf()) return EBUSY;
    const cm::internal::Lock lock(m_control);
    if (m_thread.joinable()) return EBUSY;
    m_process.store(getpid(), std::memory_order_relaxed);
    cm::internal::Completion started;
    try {
      m_thread = std::thread([this, &started] { run(started); });
    } catch (const std::system_error& error) {
      return error.code().value();
    } catch (const std::bad_alloc&) {
      return ENOMEM;
    }
    return started.Wait();
  }

  int Stop() {
    // Before the lock: another thread's Stop() holds it while it waits for this one.
    if (isSelf()) return EDEADLK;
    if (IsOfParent()) return 0;
    const cm::internal::Uncancelled uncancelled;  // Destructors stop threads, too.
    const cm::internal::Lock lock(m_control);
    if (m_thread.joinable()) {
      m_queue.Close();
      m_thread.join();
      m_process.store(0, std::memory_order_relaxed);
    }
    return 0;
  }

  /// Whether the thread runs in the process that this one was forked from. It is not here, and may have been
  /// waiting in the queue, or have held a lock of it: there is nothing to stop, and the queue must not end.
  bool IsOfParent() const {
    const pid_t process = m_process.load(std::memory_order_relaxed);
    return process != 0 && process != getpid();
  }

  /// Refuses events and has the thread, once it has fired what is queued, delete this object. REQUIRES:
  /// called by an event of that thread; nobody else uses the object, now or afterwards, hence no lock.
  void EndByItself() UTIL_LOCKING(no_thread_safety_analysis) {
    m_queue.Close();
    m_thread.detach();
    m_endsByItself = true;
  }

  unsigned long ThreadId() const { return m_queue.ThreadId(); }
  ICmEventQueue* Queue() { return m_hasQueue && m_queue.IsOpen() ? &m_queue : nullptr; }

 private:
  static constexpr std::size_t kLongestName = 15;  // The system's limit.

  bool isSelf() const { return t_running == this; }

  void run(cm::internal::Completion& started) {
    // Its waits are cancellation points, at which nobody could be notified of the thread's end.
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    t_running = this;
    if (!m_name.empty()) pthread_setname_np(pthread_self(), m_name.c_str());
    m_queue.Open();
    started.Complete(0);
    // Also when an event ends the thread (pthread_exit).
    const struct End {
      Impl& impl;
      ~End() {
        if (impl.m_endsByItself) delete &impl;
      }
    } end{*this};
    m_queue.Run();
  }

  const std::string m_name;
  const bool m_hasQueue;
  cm::internal::EventQueue m_queue;  // Also of a thread without a queue: its loop waits there for Stop().
  cm::internal::Mutex m_control;     // Held for the whole of Start() and Stop().
  std::thread m_thread UTIL_LOCKING(guarded_by(m_control));
  std::atomic<pid_t> m_process{0};  // In which the thread runs. Relaxed: asked after a fork.
  bool m_endsByItself = false;      // The thread's own.
};

ACmThread::ACmThread(const char* name, bool bEventQueue)
    : m_impl(std::make_unique<Impl>(name, bEventQueue)) {}

ACmThread::~ACmThread() {
  if (m_impl->Stop() == EDEADLK) {
    m_impl.release()->EndByItself();
  } else if (m_impl->IsOfParent()) {
    [[maybe_unused]] const Impl* const left = m_impl.release();
  }
}

int ACmThread::Start() {
  return m_impl->Start();
}

int ACmThread::Stop() {
  return m_impl->Stop();
}

unsigned long ACmThread::GetThreadId() const {
  return m_impl->ThreadId();
}

ICmEventQueue* ACmThread::GetEventQueue() {
  return m_impl->Queue();
}
