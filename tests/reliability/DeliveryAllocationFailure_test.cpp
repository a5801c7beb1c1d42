// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>

#include "FailEachAllocation.h"
#include "StoreProbe.h"
#include "Watchdog.h"
#include "support/Gate.h"
#include "support/TestClock.h"
#include "support/TraceLog.h"
#include "support/Way.h"

using namespace kalStore;

namespace {

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_VIDEO;

// A store whose subscriber is notified in one of the ways, and one that is always notified directly, after
// it.
struct Stage {
  ACmThread thread{"delivery"};
  KalConfig store{7};
  std::atomic<int> notified{0};
  int notifiedDirectly = 0;
  SubscribeId_t id = 0;

  explicit Stage(Way way) {
    EXPECT_EQ(thread.Start(), 0);
    id = store.SubscribeConfig(
        kGroup, kLongName.c_str(), [this](const KalConfigEvent&) { ++notified; },
        way == Way::kDirect ? nullptr : &thread, way == Way::kPosted);
    store.SubscribeConfig(
        kGroup, kLongName.c_str(), [this](const KalConfigEvent&) { ++notifiedDirectly; }, nullptr, false);
  }
};

class DeliveryAllocationFailure : public testing::TestWithParam<Way> {
 private:
  const Watchdog m_watchdog{kDeadlockLimit};
};

TEST_P(DeliveryAllocationFailure, EndsTheDeliveryAndNotifiesTheOthers) {
  const std::size_t failed = FailEachAllocation(
      [] { return std::make_unique<Stage>(GetParam()); },
      [](auto& stage) {
        stage->store.SetKalConfig(kGroup, kLongName.c_str(), kNewText.c_str(), false, false);
      },
      [](auto& stage, bool done) {
        stage->thread.Stop();
        EXPECT_TRUE(stage->notified == 1 || (!done && stage->notified == 0));
        EXPECT_TRUE(stage->notifiedDirectly == 1 || (!done && stage->notified == 0));
        UseFromAnotherThread(stage->store);

        // Nothing is pending: a removal does not wait, and the next change is notified.
        {
          const TraceLog log(1);
          EXPECT_EQ(stage->store.UnsubscribeConfig(stage->id), kResultOk);
          EXPECT_TRUE(log.Lines().empty());
        }
        stage->notifiedDirectly = 0;
        EXPECT_EQ(stage->store.SetKalConfig(kGroup, kLongName.c_str(), 1, false, false), kResultOk);
        EXPECT_EQ(stage->notifiedDirectly, 1);
      });
  EXPECT_GT(failed, 2U);
}

TEST_P(DeliveryAllocationFailure, AFailedInitialDeliveryUndoesTheSubscription) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = std::make_unique<Stage>(GetParam());
        stage->store.UnsubscribeConfig(stage->id);
        stage->store.SetKalConfig(kGroup, kLongName.c_str(), kOldText.c_str(), false, false);
        stage->id = 0;
        return stage;
      },
      [](auto& stage) {
        stage->id = stage->store.SubscribeConfig(
            kGroup, kLongName.c_str(), [notified = &stage->notified](const KalConfigEvent&) { ++*notified; },
            GetParam() == Way::kDirect ? nullptr : &stage->thread, GetParam() == Way::kPosted);
      },
      [](auto& stage, bool done) {
        stage->thread.Stop();
        EXPECT_EQ(stage->notified, done ? 1 : 0);
        EXPECT_EQ(TotalObservers(stage->store), done ? 2U : 1U);
        UseFromAnotherThread(stage->store);
      });
  EXPECT_GT(failed, 4U);
}

TEST_P(DeliveryAllocationFailure, WhatFailsInsideACallbackLeavesEverythingUsable) {
  Stage stage(GetParam());
  stage.store.SubscribeConfig(
      kGroup, "throws",
      [](const KalConfigEvent&) {
        const FailAllocation first(1);
        const std::string text(kLongName);
      },
      GetParam() == Way::kDirect ? nullptr : &stage.thread, GetParam() == Way::kPosted);
  bool threw = false;
  {
    const QuietTrace quiet;
    try {
      stage.store.SetKalConfig(kGroup, "throws", 1, false, false);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    stage.thread.Stop();
  }
  EXPECT_EQ(threw, GetParam() == Way::kDirect);
  EXPECT_EQ(StoredText(stage.store, kGroup, "throws"), "1");
  EXPECT_EQ(stage.thread.Start(), 0);
  EXPECT_EQ(stage.store.SetKalConfig(kGroup, kLongName.c_str(), 1, false, false), kResultOk);
  stage.thread.Stop();
  EXPECT_EQ(stage.notified, 1);
  UseFromAnotherThread(stage.store);
}

// The subscriber is notified by another thread's set when its own initial delivery fails: SubscribeConfig()
// may give up only when that thread has left the callback, since the caller takes what it captured with it.
TEST(DeliveryAllocationFailureAtOnce, AFailedSubscriptionIsNotRunningAnyMore) {
  const Watchdog watchdog(kDeadlockLimit);
  Gate leave;
  TestClock clock;
  clock.OnPause([&] {
    leave.Open();
    LetOthersRun();
  });
  KalConfig store(7);
  store.SetKalConfig(kGroup, "name", 1, false, false);
  std::atomic<int> running{0};
  std::atomic<bool> isNotified{false};
  std::thread setter;
  const auto thisThread = std::this_thread::get_id();
  const auto notify = [&](const KalConfigEvent&) {
    if (std::this_thread::get_id() == thisThread) {
      setter = std::thread([&] { store.SetKalConfig(kGroup, "name", 2, false, false); });
      while (!isNotified) std::this_thread::yield();
      throw std::bad_alloc();
    }
    ++running;
    isNotified = true;
    leave.Wait();
    --running;
  };
  EXPECT_THROW(store.SubscribeConfig(kGroup, "name", notify, nullptr, false), std::bad_alloc);
  EXPECT_EQ(running, 0);
  leave.Open();
  setter.join();
  EXPECT_EQ(store.SetKalConfig(kGroup, "name", 3, false, false), kResultNobody);
}

INSTANTIATE_TEST_SUITE_P(Ways, DeliveryAllocationFailure, testing::ValuesIn(kWays),
                         [](const auto& way) { return NameOf(way.param); });

TEST(ThreadAllocationFailure, AThreadThatCouldNotBeStartedCanBeStartedLater) {
  const Watchdog watchdog(kDeadlockLimit);
  struct Late {
    ACmThread thread{"late"};
    int started = -1;
  };
  const std::size_t failed = FailEachAllocation(
      [] { return std::make_unique<Late>(); }, [](auto& late) { late->started = late->thread.Start(); },
      [](auto& late, bool) {
        const bool isStarted = late->started == 0;
        EXPECT_TRUE(isStarted || late->started == ENOMEM) << late->started;
        EXPECT_EQ(late->thread.GetEventQueue() != nullptr, isStarted);
        EXPECT_EQ(late->thread.GetThreadId() != 0, isStarted);
        EXPECT_EQ(late->thread.Start() == 0, !isStarted);
        EXPECT_NE(late->thread.GetEventQueue(), nullptr);
        EXPECT_EQ(late->thread.Stop(), 0);
      });
  EXPECT_GT(failed, 0U);
}

TEST(ThreadAllocationFailure, AThreadIsMadeWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      [] { return std::unique_ptr<ACmThread>(); },
      [](auto& thread) { thread = std::make_unique<ACmThread>("a name longer than fifteen characters"); },
      [](auto& thread, bool done) { EXPECT_EQ(thread != nullptr, done); });
  EXPECT_GT(failed, 1U);
}

}  // namespace
