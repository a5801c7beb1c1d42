// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "store/WaitClock.h"

/// Replaces the clock of everything that waits while it lives. Each thread has its own time, which a sleep of
/// that thread moves by 1 ms: a wait of three seconds takes none, and no load makes it longer. A wait that
/// another thread ends calls OnPause(): its time stops. One clock at a time.
class TestClock {
 public:
  /// The calling thread's time begins at 0.
  TestClock() {
    t_nowMs = s_sleeps = s_yields = 0;
    s_onPause = nullptr;
    kalStore::internal::SetWaitClock(&kClock);
  }
  ~TestClock() { kalStore::internal::SetWaitClock(nullptr); }
  TestClock(const TestClock&) = delete;
  TestClock& operator=(const TestClock&) = delete;

  /// Calls `onPause` for each sleep and yield, in place of letting the time pass. REQUIRES: no wait is under
  /// way.
  void OnPause(std::function<void()> onPause) { s_onPause = std::move(onPause); }

  /// The calling thread's time.
  static long NowMs() { return t_nowMs; }
  static void PassMs(long ms) { t_nowMs += ms; }

  /// Of all threads.
  int Sleeps() const { return s_sleeps; }
  int Yields() const { return s_yields; }

 private:
  static void sleepOneMs() {
    ++s_sleeps;
    if (s_onPause) return s_onPause();
    PassMs(1);
  }
  static void yield() {
    ++s_yields;
    if (s_onPause) s_onPause();
  }

  static constexpr kalStore::internal::WaitClock kClock{&NowMs, &sleepOneMs, &yield};
  static inline thread_local long t_nowMs = 0;
  static inline std::atomic<int> s_sleeps{0};
  static inline std::atomic<int> s_yields{0};
  static inline std::function<void()> s_onPause;
};

/// Lets other threads run; for OnPause().
inline void LetOthersRun() {
  std::this_thread::yield();
}
