// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Only a deadlock lasts so long, on the busiest machine and emulated, too. ctest gives a test five minutes
/// more.
inline constexpr std::chrono::minutes kDeadlockLimit{20};

/// Ends the process when it lives longer than `limit`: prints the stack of every thread to standard error,
/// then aborts. So a deadlock fails with its cause instead of hanging. One at a time; takes over SIGUSR1 for
/// good.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::milliseconds limit);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void watch(std::chrono::milliseconds limit);

  std::mutex m_mutex;  // Protects m_done.
  std::condition_variable m_changed;
  bool m_done = false;
  std::thread m_thread;
};
