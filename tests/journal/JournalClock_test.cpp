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

// Long enough that the counter's rate is measured, and used.
TEST(JournalClock, IsTheSteadyClockAndDoesNotGoBack) {
  constexpr std::int64_t kErrorNs = 100'000;
  const std::int64_t end = SteadyNs() + 300'000'000;
  std::int64_t last = 0;
  for (std::int64_t after = 0; after < end;) {
    const std::int64_t before = SteadyNs();
    const std::int64_t now = JournalNowNs();
    after = SteadyNs();
    ASSERT_GE(now, before - kErrorNs);
    ASSERT_LE(now, after + kErrorNs);
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(JournalClock, IsReadBesideItsRenewal) {
  constexpr std::int64_t kErrorNs = 100'000;
  std::thread threads[3];
  for (std::thread& thread : threads) {
    thread = std::thread([] {
      const std::int64_t end = SteadyNs() + 100'000'000;
      std::int64_t after = 0;
      do {
        const std::int64_t before = SteadyNs();
        const std::int64_t now = JournalNowNs();
        after = SteadyNs();
        ASSERT_GE(now, before - kErrorNs);
        ASSERT_LE(now, after + kErrorNs);
      } while (after < end);
    });
  }
  for (int i = 0; i < 10000; ++i) ReadClockNs();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace kalStore::internal
