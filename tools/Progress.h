// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

/// Shows on standard error what the program does, from its first second on and until the object ends; only
/// where standard error is a terminal. One at a time, and nothing else is written to the terminal meanwhile.
class Progress {
 public:
  explicit Progress(const std::string& activity);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void show(const std::stop_token& stop, const std::string& activity);

  std::mutex m_mutex;
  std::condition_variable_any m_ended;
  std::jthread m_thread;  // Ends before what it waits by.
};
