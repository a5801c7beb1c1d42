// SPDX-License-Identifier: Apache-2.0
#include "Watchdog.h"

#include <gtest/gtest.h>

using std::chrono::milliseconds;

namespace {

TEST(WatchdogDeathTest, PrintsEveryStackAndAbortsWhenTheTimeIsOver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        const Watchdog watchdog(milliseconds(50));
        std::this_thread::sleep_for(std::chrono::seconds(30));
      },
      "not finished after 50 ms.stack of thread [0-9]+:.*deadlock_test");
}

TEST(Watchdog, LetsThoseInTimePass) {
  const Watchdog watchdog(std::chrono::minutes(10));
}

}  // namespace
