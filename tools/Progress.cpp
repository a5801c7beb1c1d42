// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <unistd.h>

#include <chrono>
#include <iostream>

#include "Colour.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

const Clock::time_point kStart = Clock::now();

}  // namespace

Progress::Progress(const std::string& activity) {
  if (!IsCapableTerminal(STDERR_FILENO)) return;
  m_thread = std::jthread([this, activity](const std::stop_token& stop) { show(stop, activity); });
}

// Writes the line again every second, and removes it in the end.
void Progress::show(const std::stop_token& stop, const std::string& activity) {
  std::unique_lock lock(m_mutex);
  seconds shown{0};
  for (seconds next{1};; next = shown + seconds(1)) {
    m_ended.wait_until(lock, stop, kStart + next, [] { return false; });
    if (stop.stop_requested()) break;
    shown = std::chrono::duration_cast<seconds>(Clock::now() - kStart);
    std::cerr << "\r\033[Ktessel: " + activity + ", " + std::to_string(shown.count()) + " s" << std::flush;
  }
  if (shown.count() != 0) std::cerr << "\r\033[K" << std::flush;
}
