// SPDX-License-Identifier: Apache-2.0
// Real-time threads of two priorities on one processor: the higher one runs until it sleeps or waits for a
// lock.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <thread>

#include "tessel/journal.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"
#include "util/util_trace.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kSharedGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr int kLow = 10;
constexpr int kHigh = 20;

/// Puts the calling thread on the first processor that it may use, as a real-time thread; 0, or an errno
/// value.
int BecomeRealTime(int priority) {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return errno;
  int first = 0;
  while (!CPU_ISSET(first, &allowed)) ++first;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(first, &one);
  if (const int error = pthread_setaffinity_np(pthread_self(), sizeof one, &one); error != 0) return error;
  const sched_param parameters{.sched_priority = priority};
  return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters);
}

class Priorities : public testing::Test {
 protected:
  void SetUp() override {
    int error = 0;
    std::thread([&] { error = BecomeRealTime(kLow); }).join();
    set_external_trace_mask(-1);  // Removals beside deliveries, and yields in vain, are what is tested.
    if (error != 0) GTEST_SKIP() << "this user may not start real-time threads: " << std::strerror(error);
  }

  void TearDown() override { set_external_trace_mask(0); }

  static std::thread Start(int priority, const std::function<void()>& work) {
    return std::thread([=] {
      EXPECT_EQ(BecomeRealTime(priority), 0);
      work();
    });
  }
  /// Lets threads of lower priority run.
  static void Sleep() { std::this_thread::sleep_for(std::chrono::microseconds(50)); }
};

TEST_F(Priorities, ShareAStoreOnOneProcessor) {
  KalConfigHelper facade(7);
  constexpr ConfigKey<int> kName{kSharedGroup, "name", -1};
  const LiveConfig live(facade, kName);
  ASSERT_EQ(StartJournal(1024), kResultOk);
  std::atomic<bool> isOver{false};
  std::atomic<int> rounds{0};
  std::thread low = Start(kLow, [&] {
    for (int i = 0; !isOver; ++i) {
      facade.SetKalConfig("name", i, kSharedGroup);
      facade.DumpKalConfigs(1U << kSharedGroup);
      const Subscription subscription(facade, kSharedGroup, "other", [](const KalConfigEvent&) {});
      const KalConfigHelper another(8);
      const StatsRef<AudioStats> statistics(7);
      ++rounds;
    }
  });
  std::thread high = Start(kHigh, [&] {
    for (int i = 0; i < 1000 || rounds < 10; ++i) {
      facade.GetKalConfig("name", kSharedGroup);
      live.Get();
      facade.SetKalConfig("other", i, kSharedGroup);
      const Subscription subscription(facade, kSharedGroup, "name", [](const KalConfigEvent&) {});
      const KalConfigHelper another(8);
      const StatsRef<AudioStats> statistics(7);
      Sleep();
    }
    isOver = true;
  });
  high.join();
  low.join();
  EXPECT_EQ(StopJournal(), kResultOk);
  CleanUpKalConfig(7);
  CleanUpKalConfig(8);
  EXPECT_GE(rounds, 10);
}

// Its yields let no thread of lower priority run, its sleeps do.
TEST_F(Priorities, EndAFacadeWhoseCallbackRunsBelow) {
  KalConfigHelper setter(7);
  auto facade = std::make_unique<KalConfigHelper>(7);
  std::atomic<bool> isInside{false};
  std::atomic<bool> isOver{false};
  facade->SubscribeConfig(
      "name",
      [&](const KalConfigEvent&) {
        isInside = true;
        for (std::atomic<int> work{0}; work < 1000000;) ++work;
        isOver = true;
      },
      kSharedGroup);
  std::thread high = Start(kHigh, [&] {
    while (!isInside) Sleep();
    facade.reset();
    EXPECT_TRUE(isOver);
  });
  std::thread low = Start(kLow, [&] { setter.SetKalConfig("name", 1, kSharedGroup); });
  high.join();
  low.join();
  CleanUpKalConfig(7);
}

}  // namespace
}  // namespace kalStore
