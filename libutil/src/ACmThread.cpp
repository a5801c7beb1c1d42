#include "util/ACmThread.h"

#include <pthread.h>

#include <cerrno>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "Completion.h"
#include "EventQueue.h"

unsigned long GetThreadSelfId() {
  return pthread_self();
}

class ACmThread::Impl {
 public:
  Impl(const char* name, bool bEventQueue)
      : m_name(std::string_view(name == nullptr ? "" : name).substr(0, kLongestName)),
        m_hasQueue(bEventQueue) {}

  int Start() {
    if (isSelf()) return EBUSY;
    std::lock_guard lock(m_control);
    if (m_thread.joinable()) return EBUSY;
    cm::Completion started;
    try {
      m_thread = std::thread([this, &started] { run(started); });
    } catch (const std::system_error& error) {
      return error.code().value();
    }
    return started.Wait();
  }

  int Stop() {
    if (isSelf()) return EDEADLK;
    std::lock_guard lock(m_control);
    if (m_thread.joinable()) {
      m_queue.Close();
      m_thread.join();
    }
    return 0;
  }

  unsigned long ThreadId() const { return m_queue.ThreadId(); }
  ICmEventQueue* Queue() { return m_hasQueue && m_queue.IsOpen() ? &m_queue : nullptr; }

 private:
  static constexpr std::size_t kLongestName = 15;  // The system's limit.

  bool isSelf() const { return m_queue.ThreadId() == GetThreadSelfId(); }

  void run(cm::Completion& started) noexcept {
    if (!m_name.empty()) pthread_setname_np(pthread_self(), m_name.c_str());
    m_queue.Open();
    started.Complete(0);
    m_queue.Run();
  }

  const std::string m_name;
  const bool m_hasQueue;
  cm::EventQueue m_queue;  // Without events for its owner it still carries the thread until Stop().
  std::mutex m_control;    // Held for the whole of Start() and Stop(). Protects m_thread.
  std::thread m_thread;
};

ACmThread::ACmThread(const char* name, bool bEventQueue)
    : m_impl(std::make_unique<Impl>(name, bEventQueue)) {}

ACmThread::~ACmThread() {
  Stop();
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
