// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <stdexcept>
#include <thread>

#include "StoreFixture.h"
#include "support/TestClock.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
// What a wait that gives up takes: more than 3000 ms must have passed.
constexpr long kGiveUpMs = 3001;

class StoreRemoval : public StoreTest {
 protected:
  std::string WaitingLine() const {
    return "kalStore::KalConfig::unsubscribeConfig, name Waiting for long time..." + Suffix();
  }
  /// Removes on this thread, and returns how long that waited.
  long MsOfRemoving(SubscribeId_t id) {
    const long before = TestClock::NowMs();
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    return TestClock::NowMs() - before;
  }
};

TEST(WaitClock, MeasuresAcrossTheNewStartOfAClock) {
  const long largestMs = timer_policy::max_time_value() / 1000;
  EXPECT_EQ(internal::ElapsedMs(5, 5), 0);
  EXPECT_EQ(internal::ElapsedMs(5, 3005), 3000);
  EXPECT_EQ(internal::ElapsedMs(largestMs - 1000, 2000), 3000);
  EXPECT_EQ(internal::ElapsedMs(largestMs, 0), 0);
}

TEST(WaitClock, IsTheSystemsInMilliseconds) {
  const long before = timer_policy::now() / 1000;
  const long now = internal::CurrentWaitClock().nowMs();
  EXPECT_LE(internal::ElapsedMs(before, now), internal::ElapsedMs(before, timer_policy::now() / 1000));
}

TEST(WaitClock, SleepsOnceAfterAnInterruptedCall) {
  errno = EINTR;
  internal::CurrentWaitClock().sleepOneMs();
  EXPECT_EQ(errno, EINTR);
}

TEST_F(StoreRemoval, EndsASubscription) {
  Recorder notified;
  const SubscribeId_t id = Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(kResultNobody, Set("name", "1"));
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreRemoval, LeavesTheOthersOfTheName) {
  Recorder notified;
  const SubscribeId_t first = Subscribe("name", notified.Callback());
  Subscribe("name", notified.Callback());
  m_store.UnsubscribeConfig(first);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(1U, notified.Count());
}

TEST_F(StoreRemoval, RefusesAnIdThatIsNotRegistered) {
  Recorder notified;
  const SubscribeId_t id = Subscribe("name", notified.Callback());
  m_store.UnsubscribeConfig(id);
  TraceLog log(0);
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(0));
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(18446744073709551615U));
  const std::string label = "kalStore::KalConfig::UnsubscribeConfig, ";
  EXPECT_THAT(log.Matching(""), ElementsAre(label + "1Failed" + Suffix(), label + "0Failed" + Suffix(),
                                            label + "18446744073709551615Failed" + Suffix()));
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, ReleasesWhatTheCallbackCaptured) {
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t first = Subscribe("name", [captured](const KalConfigEvent&) {});
  const SubscribeId_t second = Bind("name", [captured](const KalConfigEvent&) { return ConfigValue(); });
  EXPECT_EQ(3, captured.use_count());
  m_store.UnsubscribeConfig(first);
  EXPECT_EQ(2, captured.use_count());
  m_store.UnsubscribeConfig(second);
  EXPECT_EQ(1, captured.use_count());
}

TEST_F(StoreRemoval, DoesNotWaitWhenNothingIsInProgress) {
  Recorder notified;
  const SubscribeId_t id = Subscribe("name", notified.Callback());
  Set("name", "1");
  const TestClock clock;
  EXPECT_EQ(0, MsOfRemoving(id));
}

TEST_F(StoreRemoval, WaitsForADeliveryInProgressElsewhere) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = Subscribe("name", [&, captured](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = true;
  });
  TraceLog log(1);
  std::thread setter([&] { EXPECT_EQ(kResultOk, Set("name", "1")); });
  inside.Wait();
  TestClock clock;
  clock.OnPause([&] {
    go.Open();
    LetOthersRun();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_TRUE(isDone);
  EXPECT_EQ(1, captured.use_count());
  setter.join();
  EXPECT_EQ(
      1U,
      log.Count(
          "kalStore::KalConfig::unsubscribeConfig, Other thread remove itself when notification, name, "));
  EXPECT_EQ(1U, log.Count(", 1, " + std::to_string(GetThreadSelfId()) + Suffix()));
  EXPECT_EQ(1U, log.CountLevel(0));
}

TEST_F(StoreRemoval, WaitsForTheInitialDelivery) {
  Set("name", "1");
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  std::thread subscriber([&] {
    EXPECT_EQ(1U, Subscribe("name", [&](const KalConfigEvent&) {
                inside.Open();
                go.Wait();
                isDone = true;
              }));
  });
  inside.Wait();
  TestClock clock;
  clock.OnPause([&] {
    go.Open();
    LetOthersRun();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(1));
  EXPECT_TRUE(isDone);
  subscriber.join();
}

TEST_F(StoreRemoval, WaitsForABindingThatComputes) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  const SubscribeId_t id = Bind("name", [&](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = true;
    return ConfigValue("late");
  });
  std::thread reader([&] {
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
    EXPECT_STREQ("late", value.ToCstr());
  });
  inside.Wait();
  TestClock clock;
  clock.OnPause([&] {
    go.Open();
    LetOthersRun();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_TRUE(isDone);
  reader.join();
}

TEST_F(StoreRemoval, OfABindingInItsCallbackLeavesThatReadItsEvent) {
  const TestClock clock;  // The removal waits in vain for the read that it is part of.
  const std::string name(40, 'n');
  SubscribeId_t id = 0;
  id = Bind(name.c_str(), [&](const KalConfigEvent& event) {
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    Bind(name.c_str(), [](const KalConfigEvent& inner) { return inner.m_defaultValue; });
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, name.c_str(), value, "inner"));
    EXPECT_STREQ("inner", value.ToCstr());
    EXPECT_EQ(name, event.m_name);
    return event.m_defaultValue;
  });
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, name.c_str(), value, "outer"));
  EXPECT_STREQ("outer", value.ToCstr());
}

TEST_F(StoreRemoval, HappensOnceWhenSeveralThreadsTry) {
  for (int round = 0; round < 50; ++round) {
    Recorder notified;
    const SubscribeId_t id = Subscribe("name", notified.Callback());
    std::atomic<int> removed{0};
    const auto remove = [&] {
      if (m_store.UnsubscribeConfig(id) == kResultOk) ++removed;
    };
    std::thread first(remove);
    remove();
    first.join();
    EXPECT_EQ(1, removed);
  }
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, FromTheOwnCallbackGivesUpAfterThreeSecondsWhateverTheMockTime) {
  const TestClock clock;
  set_mock_time(0);
  int calls = 0;
  SubscribeId_t id = 0;
  TraceLog log(1);
  id = Subscribe("name", [&](const KalConfigEvent&) {
    ++calls;
    EXPECT_EQ(kGiveUpMs, MsOfRemoving(id));
  });
  EXPECT_EQ(kResultOk, Set("name", "1"));
  set_mock_time(~0UL);
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  EXPECT_EQ(1, calls);
  EXPECT_EQ(
      (std::vector<std::string>{
          "kalStore::KalConfig::unsubscribeConfig, Same thread remove itself when notification, name, " +
          std::to_string(GetThreadSelfId()) + ", 1" + Suffix()}),
      log.Matching("Same thread"));
  EXPECT_EQ(std::vector<std::string>(5, WaitingLine()), log.Matching("Waiting"));
  EXPECT_THAT(log.Matching("cost=").at(0),
              ::testing::StartsWith("kalStore::ConfigEventHandler::Notify, name, Audio, cost=3001ms"));
  EXPECT_EQ(6U, log.CountLevel(1));
  EXPECT_EQ(1U, log.CountLevel(0));
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, InsideAnInitialDeliveryThatThrowsIsTheOnlyOne) {
  const TestClock clock;
  Set("name", "1");
  {
    TraceLog log(2);
    EXPECT_THROW(Subscribe("name",
                           [&](const KalConfigEvent&) {
                             EXPECT_EQ(kGiveUpMs, MsOfRemoving(1));
                             throw std::runtime_error("initial");
                           }),
                 std::runtime_error);
    EXPECT_EQ(1U, log.Count("unsubscribeConfig, Audio, name, 1"));
  }
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, OfAnotherNameGivesUpInsideACallbackThatItsOwnSetNotifies) {
  const TestClock clock;
  SubscribeId_t outer = 0;
  long waitedMs = 0;
  Subscribe("inner", [&](const KalConfigEvent&) { waitedMs = MsOfRemoving(outer); });
  outer = Subscribe("outer", [&](const KalConfigEvent&) { Set("inner", "1"); });
  EXPECT_EQ(kResultOk, Set("outer", "1"));
  EXPECT_EQ(kGiveUpMs, waitedMs);
  EXPECT_EQ(kResultNobody, Set("outer", "2"));
}

TEST_F(StoreRemoval, FromAHandedOverCallbackGivesUpWhileTheSetterWaits) {
  const TestClock clock;
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  SubscribeId_t id = 0;
  long waitedMs = 0;
  TraceLog log(1);
  id = Subscribe("name", [&](const KalConfigEvent&) { waitedMs = MsOfRemoving(id); }, &thread, false);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(kGiveUpMs, waitedMs);
  EXPECT_EQ(
      (std::vector<std::string>{
          "kalStore::KalConfig::unsubscribeConfig, Other thread remove itself when notification, name, " +
          std::to_string(GetThreadSelfId()) + ", 1, " + std::to_string(thread.GetThreadId()) + Suffix()}),
      log.Matching("remove itself"));
  EXPECT_EQ(kResultNobody, Set("name", "2"));
}

TEST_F(StoreRemoval, ThatGaveUpLeavesTheCallbackToItsDelivery) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = Subscribe("name", [&, captured](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = *captured == 1;
  });
  std::thread setter([&] { EXPECT_EQ(kResultOk, Set("name", "1")); });
  inside.Wait();
  const TestClock clock;
  TraceLog log(1);
  EXPECT_EQ(kGiveUpMs, MsOfRemoving(id));
  EXPECT_EQ(std::vector<std::string>(5, WaitingLine()), log.Matching("Waiting"));
  EXPECT_EQ(5U, log.CountLevel(1));
  EXPECT_FALSE(isDone);
  EXPECT_EQ(2, captured.use_count());
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
  go.Open();
  setter.join();
  EXPECT_TRUE(isDone);
  EXPECT_EQ(1, captured.use_count());
}

// The setter waits for the run thread and the removal, on that thread, for the setter: one has to give up.
// The callback still runs once, with all that it captured, after the removal has returned.
TEST_F(StoreRemoval, FromAnEventOfTheRunThreadLeavesOneCallToASetterThatHandsOver) {
  const TestClock clock;
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  Gate announced;
  std::atomic<bool> hasReturned{false};
  std::atomic<int> calls{0};
  auto captured = std::make_shared<int>(1);
  Subscribe("name", [&](const KalConfigEvent&) { announced.Open(); });
  const SubscribeId_t id = Subscribe(
      "name",
      [&, captured](const KalConfigEvent&) {
        EXPECT_TRUE(hasReturned);
        calls += *captured;
      },
      &thread, false);
  long waitedMs = 0;
  Post(thread, [&] {
    announced.Wait();  // The change is announced to the second subscriber as well.
    waitedMs = MsOfRemoving(id);
    EXPECT_EQ(0, calls);
    hasReturned = true;
  });
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(kGiveUpMs, waitedMs);
  EXPECT_EQ(1, calls);
  EXPECT_EQ(kResultOk, Set("name", "2"));
  thread.Stop();
  EXPECT_EQ(1, calls);
  EXPECT_EQ(1, captured.use_count());
}

// The same for a subscription that fails: the initial delivery throws while a setter waits to hand over.
TEST_F(StoreRemoval, OfASubscriptionThatFailedGivesUpOnceAndLeavesOneCallToASetterThatHandsOver) {
  const TestClock clock;
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  Set("name", "1");
  Gate announced;
  Subscribe("other", [](const KalConfigEvent&) {});
  Subscribe("name", [&](const KalConfigEvent& event) {
    if (event.m_newValue.ToInt() == 2) announced.Open();
  });
  std::thread setter;
  std::atomic<bool> hasThrown{false};
  std::atomic<int> late{0};
  long waitedMs = 0;
  Send(thread, [&] {
    const long before = TestClock::NowMs();
    EXPECT_THROW(Subscribe(
                     "name",
                     [&](const KalConfigEvent& event) {
                       if (event.m_newValue.ToInt() == 2) {
                         EXPECT_TRUE(hasThrown);
                         ++late;
                         return;
                       }
                       setter = std::thread([&] { EXPECT_EQ(kResultOk, Set("name", "2")); });
                       announced.Wait();
                       throw std::runtime_error("initial");
                     },
                     &thread, false),
                 std::runtime_error);
    waitedMs = TestClock::NowMs() - before;
    hasThrown = true;
  });
  setter.join();
  EXPECT_EQ(kGiveUpMs, waitedMs);
  EXPECT_EQ(1, late);
  EXPECT_EQ(kResultOk, Set("name", "3"));
  thread.Stop();
  EXPECT_EQ(1, late);
  EXPECT_EQ("2", TotalObservers());
}

// The delivery that a removal waits for ends the store.
TEST_F(StoreRemoval, MayWaitForTheEndOfItsStore) {
  TestClock clock;
  auto store = std::make_unique<KalConfig>(6);
  Gate inside;
  Gate go;
  const SubscribeId_t id = store->SubscribeConfig(
      kAudio, "name",
      [&](const KalConfigEvent&) {
        inside.Open();
        go.Wait();
        store.reset();
      },
      nullptr, false);
  KalConfig& ending = *store;
  std::thread setter([&] { ending.SetKalConfig(kAudio, "name", "1", false, false); });
  inside.Wait();
  TraceLog log(1);
  clock.OnPause([&] {
    TestClock::PassMs(501);
    go.Open();
    if (setter.joinable()) setter.join();
  });
  EXPECT_EQ(kResultOk, ending.UnsubscribeConfig(id));
  EXPECT_EQ(1U, log.Count("name Waiting for long time... [cid=6]" + ThisText(&ending)));
}

TEST_F(StoreRemoval, FromAPostedCallbackDoesNotWait) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  SubscribeId_t id = 0;
  std::atomic<int> calls{0};
  std::atomic<long> waitedMs{-1};
  const TestClock clock;
  TraceLog log(1);
  id = Subscribe(
      "name",
      [&](const KalConfigEvent&) {
        ++calls;
        waitedMs = MsOfRemoving(id);
      },
      &thread, true);
  Gate go;
  Post(thread, [&] { go.Wait(); });  // Until the set is over: a removal before that reports the delivery.
  Set("name", "1");
  go.Open();
  thread.Stop();
  EXPECT_EQ(0, waitedMs);
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  EXPECT_EQ(1, calls);
  EXPECT_EQ(0U, log.Count("remove itself"));
}

TEST_F(StoreRemoval, DoesNotStopWhatWasPostedBefore) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  Gate go;
  Post(thread, [&] { go.Wait(); });
  Recorder notified;
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = Subscribe(
      "name", [&notified, captured](const KalConfigEvent& event) { notified.Add(event); }, &thread, true);
  Set("name", "1");
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(0U, notified.Count());
  EXPECT_EQ(2, captured.use_count());  // The posted copy.
  go.Open();
  thread.Stop();
  EXPECT_THAT(notified.Values(), ElementsAre("1"));
  EXPECT_EQ(1, captured.use_count());
}

}  // namespace
}  // namespace kalStore
