// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>

/// Holds threads until it is opened, at the latest when it ends. Threads: any.
class Gate {
 public:
  Gate() = default;
  ~Gate() { Open(); }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void Open() {
    // Notifies with the lock held: a thread that has waited may end the gate.
    const std::lock_guard lock(m_mutex);
    m_isOpen = true;
    m_opened.notify_all();
  }
  void Wait() {
    std::unique_lock lock(m_mutex);
    m_opened.wait(lock, [this] { return m_isOpen; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_opened;
  bool m_isOpen = false;
};
