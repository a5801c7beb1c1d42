// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>

#include "BriefWait.h"
#include "Mutex.h"
#include "Uncancelled.h"

namespace cm::internal {

/// One thread notifies another, once, that something is done. On the waiting thread's stack: after Complete()
/// the other thread does not touch it again.
class Completion {
 public:
  /// Before Complete(): waits until the other thread does nothing but wait.
  void AwaitWaiter() {
    Lock lock(m_mutex);
    while (!m_isAwaited) lock.Wait(m_changed);
  }

  void Complete(int result) {
    // Notifies under the lock: the waiter may destroy this as soon as the lock is free.
    const Lock lock(m_mutex);
    m_result = result;
    m_done.store(true, std::memory_order_relaxed);  // A hint without the lock; under it, the lock orders.
    m_changed.notify_one();
  }

  /// Waits for Complete() and returns its result. The other thread uses this until then: no cancellation
  /// unwinds the stack that it is on.
  int Wait() {
    const Uncancelled uncancelled;
    const auto isDone = [this] { return m_done.load(std::memory_order_relaxed); };
    WaitBriefly(isDone);
    Lock lock(m_mutex);  // In any case: until it is free, Complete() may not have returned.
    m_isAwaited = true;
    m_changed.notify_one();
    while (!isDone()) lock.Wait(m_changed);
    return m_result;
  }

 private:
  Mutex m_mutex;
  std::condition_variable m_changed;
  std::atomic<bool> m_done{false};  // Written under the lock.
  bool m_isAwaited UTIL_LOCKING(guarded_by(m_mutex)) = false;
  int m_result UTIL_LOCKING(guarded_by(m_mutex)) = 0;
};

}  // namespace cm::internal
