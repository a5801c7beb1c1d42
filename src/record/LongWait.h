// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>

#include "record/RecordingFault.h"

namespace kalStore::internal {

/// Finds out when the recording's thread waits in vain: for a lock of the stores, of the statistics or of the
/// loader, which a thread holds that waits for the recording itself.
///
/// Threads: one waits, any asks. Beginning to wait releases, and giving up acquires: whoever gives up may end
/// what the thread has used before.
class LongWait {
  using Clock = std::chrono::steady_clock;

 public:
  /// Calls what may wait for such a lock. Throws RecordingFault when it was given up meanwhile.
  /// Whatever is thrown ends the recording. Not nested.
  template <class Function>
  auto Run(Function function) {
    m_begin.store(Clock::now(), std::memory_order_release);
    auto result = function();
    if (m_begin.exchange(kNoWait, std::memory_order_relaxed) == kGivenUp)
      throw RecordingFault("its end could not wait for a lock");
    return result;
  }

  /// Whether the thread has waited for so long that the lock does not come, and the caller since `since`.
  bool IsInVain(Clock::time_point since) const {
    return isLongAgo(std::max(since, m_begin.load(std::memory_order_relaxed)));
  }
  /// The same of the thread alone. Then it goes no further when the lock comes after all.
  bool GiveUp() {
    Clock::time_point begin = m_begin.load(std::memory_order_relaxed);
    return isLongAgo(begin) && m_begin.compare_exchange_strong(begin, kGivenUp, std::memory_order_acquire);
  }

 private:
  static constexpr Clock::time_point kNoWait = Clock::time_point::max();
  static constexpr Clock::time_point kGivenUp = Clock::time_point::min();

  static bool isLongAgo(Clock::time_point begin) { return begin < Clock::now() - std::chrono::seconds(3); }

  std::atomic<Clock::time_point> m_begin{kNoWait};
};

}  // namespace kalStore::internal
