#pragma once

#include <condition_variable>
#include <mutex>

namespace cm {

/// One thread tells another, once, that something is done. Lives on the waiting thread's stack: after
/// Complete() the other thread does not touch it again.
class Completion {
 public:
  void Complete(int result) {
    // Notifies under the lock: the waiter may destroy this as soon as the lock is free.
    std::lock_guard lock(m_mutex);
    m_result = result;
    m_done = true;
    m_changed.notify_one();
  }

  /// Waits for Complete() and returns its result.
  int Wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_done; });
    return m_result;
  }

 private:
  std::mutex m_mutex;  // Protects everything below.
  std::condition_variable m_changed;
  bool m_done = false;
  int m_result = 0;
};

}  // namespace cm
