// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <thread>

#include "store/WaitClock.h"

/// Stands in for the clock of everything that waits while it lives, so that three seconds take none and no
/// load makes a wait longer. Each thread has its own time, which its sleeps alone move. One at a time.
class TestClock {
 public:
  /// @param msPerSleep  by how much a sleep moves the time; 0: what is waited for has all the time it needs
  explicit TestClock(long msPerSleep) {
    s_msPerSleep = msPerSleep;
    s_onSleep = nullptr;
    kalStore::internal::SetWaitClock(&kClock);
  }
  ~TestClock() { kalStore::internal::SetWaitClock(nullptr); }
  TestClock(const TestClock&) = delete;
  TestClock& operator=(const TestClock&) = delete;

  /// Runs `function` in each sleep. REQUIRES: no wait is under way.
  void OnSleep(std::function<void()> function) { s_onSleep = std::move(function); }

  /// The calling thread's time and sleeps.
  static long NowMs() { return t_nowMs; }
  static long Sleeps() { return t_sleeps; }
  static void Advance(long ms) { t_nowMs += ms; }

 private:
  static void sleepOneMs() {
    ++t_sleeps;
    t_nowMs += s_msPerSleep;
    if (s_onSleep) s_onSleep();
    std::this_thread::yield();
  }

  static constexpr kalStore::internal::WaitClock kClock{&NowMs, &sleepOneMs, &std::this_thread::yield};
  static inline thread_local long t_nowMs = 0;
  static inline thread_local long t_sleeps = 0;
  static inline long s_msPerSleep = 0;
  static inline std::function<void()> s_onSleep;
};
