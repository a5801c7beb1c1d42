// SPDX-License-Identifier: Apache-2.0
#pragma once

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
  std::jthread m_thread;
};
