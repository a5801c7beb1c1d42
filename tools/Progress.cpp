// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>

#include "Colour.h"
#include "tessel/locking.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

const Clock::time_point kStart = Clock::now();

// Writes the line again every second, and removes it in the end.
void Show(const std::stop_token& stop, const std::string& activity) {
  // Protects nothing: a wait takes one.
  kalStore::detail::Mutex<std::mutex> mutex;
  const kalStore::detail::Lock lock(mutex);
  std::condition_variable_any ended;
  seconds shown{0};
  for (seconds next{1};; next = shown + seconds(1)) {
    ended.wait_until(mutex, stop, kStart + next, [] { return false; });
    if (stop.stop_requested()) break;
    shown = std::chrono::duration_cast<seconds>(Clock::now() - kStart);
    std::cerr << "\r\033[Ktessel: " + activity + ", " + std::to_string(shown.count()) + " s" << std::flush;
  }
  if (shown.count() != 0) std::cerr << "\r\033[K" << std::flush;
}

}  // namespace

Progress::Progress(const std::string& activity) {
  if (!IsCapableTerminal(STDERR_FILENO)) return;
  m_thread = std::jthread([activity](const std::stop_token& stop) { Show(stop, activity); });
}
