// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "FacadeTest.h"
#include "store/WaitClock.h"

/// A clock that moves only when somebody sleeps by it, while it lives. One at a time. A wait that depends on
/// another thread calls OnPause() meanwhile: the time does not pass, and the wait ends when that thread is
/// ready.
class TestClock {
 public:
  TestClock() {
    Reset();
    kalStore::internal::SetWaitClock(&kClock);
  }
  ~TestClock() {
    kalStore::internal::SetWaitClock(nullptr);
    Reset();
  }
  TestClock(const TestClock&) = delete;
  TestClock& operator=(const TestClock&) = delete;

  /// Calls `onPause` for each sleep and yield, in place of letting the time pass. Set before any wait begins.
  void OnPause(std::function<void()> onPause) { s_onPause = std::move(onPause); }

  /// For an onPause that lets the time pass.
  void PassOneMs() { ++s_nowMs; }

  long NowMs() const { return s_nowMs; }
  int Sleeps() const { return s_sleeps; }
  int Yields() const { return s_yields; }

 private:
  static void Reset() {
    s_nowMs = s_sleeps = s_yields = 0;
    s_onPause = nullptr;
  }

  static inline std::atomic<long> s_nowMs{0};
  static inline std::atomic<int> s_sleeps{0};
  static inline std::atomic<int> s_yields{0};
  static inline std::function<void()> s_onPause;

  static constexpr kalStore::internal::WaitClock kClock{[] { return s_nowMs.load(); },
                                                        [] {
                                                          ++s_sleeps;
                                                          if (s_onPause) return s_onPause();
                                                          ++s_nowMs;
                                                        },
                                                        [] {
                                                          ++s_yields;
                                                          if (s_onPause) s_onPause();
                                                        }};
};

/// Lets other threads run; for OnPause().
inline void LetOthersRun() {
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// Ends what a test gives up on before its locals go.
class Gate {
 public:
  ~Gate() { Open(); }
  void Open() {
    m_isOpen = true;
    m_isOpen.notify_all();
  }
  void Wait() const { m_isOpen.wait(false); }

 private:
  std::atomic<bool> m_isOpen{false};
};
