// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <thread>

namespace kalStore::internal {
namespace {

std::int64_t SteadyNs() {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// How exact it is, depends on the machine; that it is this clock, does not. Long enough that the rate of a
// counter is measured, and used.
TEST(JournalClock, IsTheSteadyClock) {
  constexpr std::int64_t kMinuteNs = 60'000'000'000;
  for (int i = 0; i < 4; ++i) {
    const std::int64_t before = SteadyNs();
    const std::int64_t now = JournalNowNs();
    EXPECT_GE(now, before - kMinuteNs);
    EXPECT_LE(now, SteadyNs() + kMinuteNs);
    std::this_thread::sleep_for(std::chrono::milliseconds(11));
  }
}

TEST(JournalClock, DoesNotGoBackOnAThread) {
  static constexpr std::int64_t kAheadNs = std::numeric_limits<std::int64_t>::max();
  t_journal.lastNs = kAheadNs;
  EXPECT_EQ(JournalNowNs(), kAheadNs);
  std::thread([] { EXPECT_LT(JournalNowNs(), kAheadNs); }).join();
  t_journal.lastNs = 0;
  EXPECT_LT(JournalNowNs(), kAheadNs);
}

}  // namespace
}  // namespace kalStore::internal
