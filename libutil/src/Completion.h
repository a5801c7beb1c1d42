// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "BriefWait.h"

namespace cm::internal {

/// One thread notifies another, once, that something is done. On the waiting thread's stack: after Complete()
/// the other thread does not touch it again.
class Completion {
 public:
  void Complete(int result) {
    // Notifies under the lock: the waiter may destroy this as soon as the lock is free.
    std::lock_guard lock(m_mutex);
    m_result = result;
    m_done.store(true, std::memory_order_relaxed);  // A hint without the lock; under it, the lock orders.
    m_changed.notify_one();
  }

  /// Waits for Complete() and returns its result.
  int Wait() {
    const auto isDone = [this] { return m_done.load(std::memory_order_relaxed); };
    WaitBriefly(isDone);
    std::unique_lock lock(m_mutex);  // In any case: until it is free, Complete() may not have returned.
    m_changed.wait(lock, isDone);
    return m_result;
  }

 private:
  std::mutex m_mutex;  // Protects everything below.
  std::condition_variable m_changed;
  std::atomic<bool> m_done{false};
  int m_result = 0;
};

}  // namespace cm::internal
