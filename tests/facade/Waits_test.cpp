// SPDX-License-Identifier: Apache-2.0
// How long a removal waits, and what for.
#include <atomic>
#include <string>
#include <string_view>
#include <thread>

#include "WaysToSubscribe.h"
#include "support/CallingSink.h"
#include "tessel/post.h"

namespace kalStore {
namespace {

class Waits : public FacadeTest, public testing::WithParamInterface<WayToSubscribe> {
 protected:
  Waits() { m_thread.Start(); }
  ~Waits() override {
    m_release.Open();
    m_thread.Stop();
  }

  // Subscribes a callback that does not return before m_release.
  std::function<void()> SubscribeStuck(bool isAsync) {
    return GetParam().subscribe(
        [this](const KalConfigEvent&) {
          m_running.Open();
          m_release.Wait();
          m_hasEnded = true;
        },
        &m_thread, isAsync);
  }
  bool IsEndOfAFacade() const { return std::string_view(GetParam().name) == "EndOfTheFacade"; }

  TestClock m_clock;
  const TraceLog m_log{0};
  Gate m_running, m_release;
  std::atomic<bool> m_hasEnded{false};
  ACmThread m_thread{"subscriber"};
  KalConfigHelper m_setter{kCall};
};

TEST_P(Waits, OnceForAHandedOverRunThatDoesNotReturn) {
  const std::function<void()> remove = SubscribeStuck(false);
  std::thread setter([&] { m_setter.SetKalConfig("a", 1, kGroup); });
  m_running.Wait();
  remove();
  EXPECT_EQ(m_clock.NowMs(), 3001);  // More than 3000 ms: the store's wait, and no other.
  m_release.Open();
  setter.join();
}

TEST_P(Waits, ForAPostedRunThatDoesNotReturn) {
  const std::function<void()> remove = SubscribeStuck(true);
  m_setter.SetKalConfig("a", 1, kGroup);
  m_running.Wait();
  remove();
  EXPECT_EQ(m_clock.NowMs(), IsEndOfAFacade() ? 0 : 3000);
  EXPECT_EQ(m_clock.Yields(), IsEndOfAFacade() ? 50000 : 0);
}

TEST_P(Waits, WithOneDeadlineForAllThatDoesNotReturn) {
  Gate announced;
  std::atomic<int> sets{0};
  m_setter.SubscribeConfig(
      "a",
      [&](const KalConfigEvent&) {
        if (++sets < 2) return;
        announced.Open();
        m_release.Wait();
      },
      kGroup);
  const std::function<void()> remove = SubscribeStuck(true);
  m_setter.SetKalConfig("a", 1, kGroup);
  m_running.Wait();
  // The second delivery is announced to the subscription, too, and gets no further.
  std::thread setter([&] { m_setter.SetKalConfig("a", 2, kGroup); });
  announced.Wait();
  remove();
  EXPECT_EQ(m_clock.NowMs(), 3001);
  m_release.Open();
  setter.join();
}

TEST_P(Waits, ForTheEndOfAPostedRun) {
  const std::function<void()> remove = SubscribeStuck(true);
  m_setter.SetKalConfig("a", 1, kGroup);
  m_running.Wait();
  m_clock.OnPause([&] {
    m_release.Open();
    LetOthersRun();
  });
  remove();
  EXPECT_TRUE(m_hasEnded);
  EXPECT_EQ(m_log.Count("Clean()"), 0U);
}

TEST_P(Waits, NotForItsOwnPostedRunUnlessTheFacadeEnds) {
  std::function<void()> remove;
  Gate hasSet;  // Until its end, a set has a delivery in progress of its own.
  remove = GetParam().subscribe(
      [&](const KalConfigEvent&) {
        hasSet.Wait();
        remove();
      },
      &m_thread, true);
  m_setter.SetKalConfig("a", 1, kGroup);
  hasSet.Open();
  Send(m_thread, [] {});
  EXPECT_EQ(m_clock.Sleeps(), 0);
  EXPECT_EQ(m_clock.Yields(), IsEndOfAFacade() ? 50000 : 0);
  EXPECT_EQ(m_setter.SetKalConfig("a", 2, kGroup), kResultNobody);
}

TEST_P(Waits, OnceForItsOwnRunOnTheSettersThread) {
  int runs = 0;
  std::function<void()> remove;
  remove = GetParam().subscribe(
      [&](const KalConfigEvent&) {
        ++runs;
        remove();
      },
      nullptr, false);
  EXPECT_EQ(m_setter.SetKalConfig("a", 1, kGroup), kResultOk);
  EXPECT_EQ(m_clock.NowMs(), 3001);
  EXPECT_EQ(m_setter.SetKalConfig("a", 2, kGroup), kResultNobody);
  EXPECT_EQ(runs, 1);
}

TEST_P(Waits, ForNothingWhenNothingRuns) {
  GetParam().subscribe([](const KalConfigEvent&) {}, &m_thread, false)();
  EXPECT_EQ(m_clock.Sleeps() + m_clock.Yields(), 0);
}

INSTANTIATE_TEST_SUITE_P(Removed, Waits, testing::ValuesIn(kWaysToSubscribe),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Removal, OfASubscriptionThatAnotherThreadRemovesByNameWaitsAsWell) {
  TestClock clock;
  KalConfigHelper setter(kCall), facade(kCall);
  Gate running, removing, release;
  std::atomic<bool> hasEnded{false};
  Subscription subscription(facade, kGroup, "a", [&](const KalConfigEvent&) {
    running.Open();
    release.Wait();
    hasEnded = true;
  });
  std::atomic<std::thread::id> owner;
  clock.OnPause([&] {
    (std::this_thread::get_id() == owner.load() ? release : removing).Open();
    LetOthersRun();
  });
  std::thread settingThread([&] { setter.SetKalConfig("a", 1, kGroup); });
  running.Wait();
  std::thread remover([&] { EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultOk); });
  removing.Wait();
  owner = std::this_thread::get_id();
  subscription.Remove();
  EXPECT_TRUE(hasEnded);
  release.Open();
  settingThread.join();
  remover.join();
  CleanUpKalConfig(kCall);
}

using Binding = FacadeTest;

TEST_F(Binding, MakesNoSubscriptionThatItsInitialDeliveryRemoves) {
  TestClock clock;
  ACmThread thread;
  thread.Start();
  KalConfigHelper setter(kCall);
  setter.SetKalConfig("a", 1, kGroup);
  const struct {
    ACmThread* thread;
    bool isAsync;
  } ways[] = {{nullptr, false}, {nullptr, true}, {&thread, false}};
  for (const auto& way : ways) {
    KalConfigHelper facade;
    int runs = 0;
    long waitedMs = 0;
    Subscription subscription;
    subscription = Subscription(
        facade, kGroup, "a",
        [&](const KalConfigEvent&) {
          ++runs;
          const long startMs = clock.NowMs();
          subscription.Remove();
          waitedMs = clock.NowMs() - startMs;
        },
        way.thread, way.isAsync);
    EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
    EXPECT_EQ(waitedMs, 3000) << &way - ways;
    EXPECT_EQ(setter.SetKalConfig("a", 2, kGroup, true), kResultNobody);
    EXPECT_EQ(runs, 1);
    EXPECT_NE(facade.SubscribeConfig("a", [](const KalConfigEvent&) {}, kGroup), 0U);
  }
}

TEST_F(Binding, IsWaitedForByARemovalOnAnotherThread) {
  TestClock clock;
  KalConfigHelper setter(kCall);
  setter.SetKalConfig("a", 1, kGroup);
  KalConfigHelper facade;
  Gate running, release;
  std::atomic<bool> hasEnded{false};
  Subscription subscription(facade, kGroup, "a", [&](const KalConfigEvent&) {
    running.Open();
    release.Wait();
    hasEnded = true;
  });
  std::thread binder([&] { facade.SetCallId(kCall); });
  running.Wait();
  clock.OnPause([&] {
    release.Open();
    LetOthersRun();
  });
  subscription.Remove();
  EXPECT_TRUE(hasEnded);
  EXPECT_EQ(setter.SetKalConfig("a", 2, kGroup), kResultNobody);
  binder.join();
}

TEST_F(Binding, IsWaitedForWithTheRunsOnOtherThreadsByARemoval) {
  TestClock clock;
  KalConfigHelper setter(kCall);
  setter.SetKalConfig("a", 1, kGroup);
  KalConfigHelper facade;
  Gate initial, goOn, running, release;
  std::atomic<bool> isWithdrawing{false}, hasEnded{false};
  Subscription subscription(facade, kGroup, "a", [&](const KalConfigEvent& event) {
    const bool isInitial = event.m_newValue == ConfigData(1);
    (isInitial ? initial : running).Open();
    (isInitial ? goOn : release).Wait();
    if (!isInitial) hasEnded = true;
  });
  const std::thread::id remover = std::this_thread::get_id();
  int pauses = 0;
  clock.OnPause([&] {
    if (std::this_thread::get_id() != remover) {
      isWithdrawing = true;  // What the binding has registered it takes back, and waits for the other run.
    } else if (isWithdrawing && ++pauses > 1) {
      release.Open();
    }
    goOn.Open();
    LetOthersRun();
  });
  std::thread binder([&] { facade.SetCallId(kCall); });
  initial.Wait();
  std::thread settingThread([&] { setter.SetKalConfig("a", 2, kGroup); });
  running.Wait();
  subscription.Remove();
  EXPECT_TRUE(hasEnded);
  release.Open();
  settingThread.join();
  binder.join();
}

TEST_F(Binding, ThatTheStoreRefusesIsOverForARemovalOnAnotherThread) {
  const auto value = [](const KalConfigEvent&) { return ConfigData(1); };
  TestClock clock;
  KalConfigHelper other(kCall);
  other.BindConfig("a", value, kGroup);
  KalConfigHelper facade;
  kalStore::Binding binding(facade, kGroup, "a", value);
  Gate removing, refused;
  clock.OnPause([&] {
    removing.Open();
    refused.Wait();
    TestClock::PassMs(1);
  });
  long waitedMs = 0;
  std::thread remover;
  {
    const CallingSink registering("::bindConfig", [&] {
      remover = std::thread([&] {
        binding.Remove();
        waitedMs = clock.NowMs();
      });
      removing.Wait();
    });
    facade.SetCallId(kCall);
  }
  refused.Open();
  remover.join();
  EXPECT_EQ(waitedMs, 1);
}

using Clean = FacadeTest;

TEST_F(Clean, GivesUpAfter50000YieldsWithALine) {
  TestClock clock;
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  KalConfigHelper setter(kCall);
  Gate running, release;
  const TraceLog log(0);
  {
    KalConfigHelper facade(kCall);
    facade.SubscribeConfig(
        "a",
        [&](const KalConfigEvent&) {
          running.Open();
          release.Wait();
        },
        kGroup, &thread, true);
    setter.SetKalConfig("a", 1, kGroup);
    running.Wait();
  }
  EXPECT_EQ(clock.Yields(), 50000);
  EXPECT_EQ(clock.Sleeps(), 0);
  ASSERT_EQ(log.Lines().size(), 1U);
  const TraceLog::Line line = log.Lines()[0];
  const std::string begin =
      "kalStore::KalConfigObserverHelper::CleanClean() spin-wait exceeded ceiling, "
      "breaking to avoid hang [this=0x";
  EXPECT_EQ(line.level, 0);
  EXPECT_EQ(line.text.substr(0, begin.size()), begin);
  release.Open();
  thread.Stop();
}

TEST_F(Clean, LetsARunningCallbackUseTheFacade) {
  TestClock clock;
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  KalConfigHelper setter(kCall);
  Gate running, release;
  bool hasEnded = false;
  {
    KalConfigHelper facade(kCall);
    facade.SubscribeConfig(
        "a",
        [&](const KalConfigEvent&) {
          running.Open();
          release.Wait();
          EXPECT_EQ(facade.GetKalConfig("a", kGroup), ConfigData(1));
          hasEnded = true;
        },
        kGroup, &thread, true);
    setter.SetKalConfig("a", 1, kGroup);
    running.Wait();
    clock.OnPause([&] {
      release.Open();
      LetOthersRun();
    });
  }
  EXPECT_TRUE(hasEnded);
  thread.Stop();
}

}  // namespace
}  // namespace kalStore
