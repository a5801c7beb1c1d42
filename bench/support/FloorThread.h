// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

/// The least that a thread with a queue of work can be: a deque under a mutex with a condition variable.
class FloorThread {
 public:
  ~FloorThread() { Post(nullptr); }

  void Post(std::function<void()> work) {
    {
      const std::lock_guard lock(m_mutex);
      m_queue.push_back(std::move(work));
    }
    m_changed.notify_one();
  }

  /// Posts and waits until the work is done.
  void Send(const std::function<void()>& work) {
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
    Post([&] {
      work();
      const std::lock_guard lock(mutex);
      isDone = true;
      changed.notify_one();
    });
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return isDone; });
  }

 private:
  void run() {
    for (;;) {
      std::unique_lock lock(m_mutex);
      m_changed.wait(lock, [this] { return !m_queue.empty(); });
      const std::function<void()> work = std::move(m_queue.front());
      m_queue.pop_front();
      lock.unlock();
      if (!work) return;
      work();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_queue;
  std::jthread m_thread{[this] { run(); }};
};
