// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalClock.h"

#include <gtest/gtest.h>

#include <chrono>
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
  constexpr std::int64_t kMinuteNs = 60'000'000'000;
  const std::int64_t aheadNs = SteadyNs() + kMinuteNs;
  t_journal.lastNs = aheadNs;
  EXPECT_EQ(JournalNowNs(), aheadNs);
  std::thread([=] { EXPECT_LT(JournalNowNs(), aheadNs); }).join();
  t_journal.lastNs = 0;
  EXPECT_LT(JournalNowNs(), aheadNs);
}

}  // namespace
}  // namespace kalStore::internal
