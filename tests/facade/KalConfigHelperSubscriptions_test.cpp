// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "FacadeTest.h"

namespace kalStore {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kObserverHelper = "kalStore::KalConfigObserverHelper::";

class KalConfigHelperSubscriptionsTest : public FacadeTest {
 protected:
  fnConfigChangedCallBack Note(const std::string& who) {
    return [this, who](const KalConfigEvent& event) {
      m_seen.push_back(who + ":" + event.m_newValue.ToString());
    };
  }

  std::vector<std::string> m_seen;
};

TEST_F(KalConfigHelperSubscriptionsTest, NotifiesOfChanges) {
  KalConfigHelper facade(kCall);
  EXPECT_NE(facade.SubscribeConfig("a", Note("1"), kGroup), 0U);
  EXPECT_EQ(facade.SetKalConfig("a", "x", kGroup), kResultOk);
  EXPECT_EQ(facade.SetKalConfig("b", "x", kGroup), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("a", "x", Group(0)), kResultNobody);
  EXPECT_THAT(m_seen, ElementsAre("1:x"));
}

TEST_F(KalConfigHelperSubscriptionsTest, UsesTheDefaultGroup) {
  KalConfigHelper facade(kCall);
  facade.SetDefaultGroup(kGroup);
  EXPECT_NE(facade.SubscribeConfig("a", Note("1")), 0U);
  EXPECT_NE(facade.BindConfig("b", [](const KalConfigEvent&) { return ConfigData(1); }), 0U);
  EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup), kResultOk);
  EXPECT_EQ(facade.UnsubscribeConfig("a", KAL_CONFIG_GROUP_DEFAULT), kResultOk);
  EXPECT_EQ(facade.GetDynamicConfig("b", kGroup), ConfigData(1));
}

TEST_F(KalConfigHelperSubscriptionsTest, RecordsUntilItIsBound) {
  KalConfigHelper setter(kCall);
  KalConfigHelper facade;
  const unsigned long reports = cm_assertion_report_count();
  TraceLog log(0);
  EXPECT_EQ(facade.SubscribeConfig("a", Note("1"), kGroup), 0U);
  EXPECT_EQ(facade.BindConfig("b", [](const KalConfigEvent&) { return ConfigData(7); }, kGroup), 0U);
  setter.SetKalConfig("a", "early", kGroup);
  EXPECT_THAT(m_seen, IsEmpty());
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
  EXPECT_THAT(m_seen, ElementsAre("1:early")) << "the initial delivery";
  setter.SetKalConfig("a", "late", kGroup);
  EXPECT_THAT(m_seen, ElementsAre("1:early", "1:late"));
  EXPECT_EQ(setter.GetDynamicConfig("b", kGroup), ConfigData(7));
  EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultOk);
  EXPECT_EQ(setter.SetKalConfig("a", "later", kGroup), kResultNobody);
  EXPECT_THAT(log.Lines(), IsEmpty());
  EXPECT_EQ(cm_assertion_report_count(), reports);
}

TEST_F(KalConfigHelperSubscriptionsTest, MakesRecordsByGroupAndThenByName) {
  KalConfigHelper setter(kCall);
  KalConfigHelper facade;
  for (const std::uint32_t group : {12U, 0U, 3U}) {
    for (const char* name : {"b", "a"}) {
      setter.SetKalConfig(name, std::string(name) + std::to_string(group), Group(group));
      facade.SubscribeConfig(name, Note("x"), Group(group));
    }
  }
  facade.SetCallId(kCall);
  EXPECT_THAT(m_seen, ElementsAre("x:a0", "x:b0", "x:a3", "x:b3", "x:a12", "x:b12"));
}

TEST_F(KalConfigHelperSubscriptionsTest, ReplacesARecordThatWaits) {
  KalConfigHelper facade;
  facade.SubscribeConfig("a", Note("first"), kGroup);
  EXPECT_EQ(facade.SubscribeConfig("a", Note("second"), kGroup), 0U);
  facade.SubscribeConfig("b", Note("never"), kGroup);
  facade.BindConfig("b", [](const KalConfigEvent&) { return ConfigData("bound"); }, kGroup);
  facade.SetCallId(kCall);
  EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup), kResultOk);
  EXPECT_EQ(facade.SetKalConfig("b", 1, kGroup), kResultNobody);
  EXPECT_EQ(facade.GetDynamicConfig("b", kGroup), ConfigData("bound"));
  EXPECT_THAT(m_seen, ElementsAre("second:1"));
}

TEST_F(KalConfigHelperSubscriptionsTest, RefusesASecondSubscriptionOfAName) {
  KalConfigHelper facade(kCall);
  EXPECT_NE(facade.SubscribeConfig("a", Note("first"), kGroup), 0U);
  EXPECT_EQ(facade.SubscribeConfig("a", Note("second"), kGroup), 0U);
  EXPECT_EQ(facade.BindConfig("a", [](const KalConfigEvent&) { return ConfigData(); }, kGroup), 0U);
  facade.SetKalConfig("a", 1, kGroup);
  EXPECT_THAT(m_seen, ElementsAre("first:1"));
  EXPECT_NE(facade.SubscribeConfig("a", Note("other group"), Group(0)), 0U);
  KalConfigHelper other(kCall);
  EXPECT_NE(other.SubscribeConfig("a", Note("other facade"), kGroup), 0U);
}

TEST_F(KalConfigHelperSubscriptionsTest, CanSubscribeAgainAfterRemoval) {
  KalConfigHelper facade(kCall);
  const SubscribeId_t first = facade.SubscribeConfig("a", Note("first"), kGroup);
  EXPECT_EQ(facade.UnsubscribeConfig(first), kResultOk);
  EXPECT_EQ(facade.UnsubscribeConfig(first), kResultNotFound);
  EXPECT_GT(facade.SubscribeConfig("a", Note("second"), kGroup), first);
  facade.SetKalConfig("a", 1, kGroup);
  EXPECT_THAT(m_seen, ElementsAre("second:1"));
}

TEST_F(KalConfigHelperSubscriptionsTest, RemovesNothingByAnIdThatIsNotItsOwn) {
  KalConfigHelper facade(kCall);
  KalConfigHelper other(kCall);
  const SubscribeId_t id = other.SubscribeConfig("a", Note("other"), kGroup);
  TraceLog log;
  for (const SubscribeId_t unknown : {SubscribeId_t{0}, id, id + 1000, ~SubscribeId_t{0}}) {
    EXPECT_EQ(facade.UnsubscribeConfig(unknown), kResultNotFound);
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
  facade.SetKalConfig("a", 1, kGroup);
  EXPECT_THAT(m_seen, ElementsAre("other:1"));
}

TEST_F(KalConfigHelperSubscriptionsTest, TracesBadArguments) {
  KalConfigHelper facade(kCall);
  const unsigned long reports = cm_assertion_report_count();
  const TraceLog log;
  EXPECT_EQ(facade.SubscribeConfig("", Note("x"), kGroup), 0U);
  EXPECT_EQ(facade.SubscribeConfig("a", nullptr, kGroup), 0U);
  EXPECT_EQ(facade.SubscribeConfig("a", Note("x"), Group(13)), 0U);
  EXPECT_EQ(facade.BindConfig("", [](const KalConfigEvent&) { return ConfigData(); }, kGroup), 0U);
  EXPECT_EQ(facade.BindConfig("a", nullptr, kGroup), 0U);
  EXPECT_EQ(
      facade.BindConfig("a", [](const KalConfigEvent&) { return ConfigData(); }, Group(0xFFFFFFFE)), 0U);
  EXPECT_EQ(facade.UnsubscribeConfig(nullptr, kGroup), kResultBadArgument);
  EXPECT_EQ(facade.UnsubscribeConfig("", kGroup), kResultBadArgument);
  EXPECT_EQ(facade.UnsubscribeConfig("a", Group(13)), kResultBadArgument);
  EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultNotFound);
  EXPECT_EQ(cm_assertion_report_count(), reports);
  ASSERT_EQ(log.Lines().size(), 10U);
  const char* expected[] = {"SubscribeConfigError parameters",   "SubscribeConfigError parameters",
                            "SubscribeConfigError parameters",   "BindConfigError parameters",
                            "BindConfigError parameters",        "BindConfigError parameters",
                            "UnsubscribeConfigError parameters", "UnsubscribeConfigError parameters",
                            "UnsubscribeConfigError parameters", "UnsubscribeConfigFailed"};
  for (std::size_t i = 0; i < 10; ++i) {
    const TraceLog::Line line = log.Lines()[i];
    const std::string begin = kObserverHelper + expected[i] + " [this=0x";
    EXPECT_EQ(line.level, 0);
    EXPECT_EQ(line.text.substr(0, begin.size()), begin);
    EXPECT_EQ(line.text.find_first_not_of("0123456789abcdef", begin.size()), line.text.size() - 1);
    EXPECT_EQ(line.text.back(), ']');
  }
}

TEST_F(KalConfigHelperSubscriptionsTest, KeepsARecordThatWasNeverMade) {
  KalConfigHelper facade;
  facade.SubscribeConfig("a", Note("kept"), kGroup);
  const TraceLog log;
  EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultNotFound);
  EXPECT_THAT(log.Lines(), IsEmpty());
  facade.SetCallId(kCall);
  facade.SetKalConfig("a", 1, kGroup);
  EXPECT_THAT(m_seen, ElementsAre("kept:1"));
}

TEST_F(KalConfigHelperSubscriptionsTest, KeepsARecordThatTheStoreRefused) {
  const auto value = [](const KalConfigEvent&) { return ConfigData(2); };
  KalConfigHelper facade(kCall);
  {
    KalConfigHelper other(kCall);
    ASSERT_NE(other.BindConfig("a", [](const KalConfigEvent&) { return ConfigData(1); }, kGroup), 0U);
    EXPECT_EQ(facade.BindConfig("a", value, kGroup), 0U);
    EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultNotFound);
    EXPECT_EQ(facade.GetDynamicConfig("a", kGroup), ConfigData(1));
  }
  EXPECT_FALSE(facade.GetDynamicConfig("a", kGroup).IsValid()) << "the other facade is gone";
  EXPECT_NE(facade.BindConfig("a", value, kGroup), 0U);
  EXPECT_EQ(facade.GetDynamicConfig("a", kGroup), ConfigData(2));
}

TEST_F(KalConfigHelperSubscriptionsTest, ForgetsASubscriptionWhoseInitialDeliveryThrows) {
  KalConfigHelper facade(kCall);
  EXPECT_EQ(facade.SubscribeConfig("b", Note("first"), kGroup), 1U);
  facade.SetKalConfig("a", 1, kGroup);
  EXPECT_THROW(facade.SubscribeConfig(
                   "a", [](const KalConfigEvent&) { throw std::runtime_error("no"); }, kGroup),
               std::runtime_error);
  EXPECT_EQ(facade.SetKalConfig("b", 1, kGroup), kResultOk) << "and no other";
  EXPECT_EQ(facade.SetKalConfig("a", 2, kGroup), kResultNobody);
  EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultNotFound);
  EXPECT_NE(facade.SubscribeConfig("a", Note("again"), kGroup), 0U);
  EXPECT_THAT(m_seen, ElementsAre("first:1", "again:2"));
}

TEST_F(KalConfigHelperSubscriptionsTest, LetsACallbacksExceptionPass) {
  KalConfigHelper facade(kCall);
  facade.SubscribeConfig("a", [](const KalConfigEvent&) { throw std::runtime_error("no"); }, kGroup);
  EXPECT_THROW(facade.SetKalConfig("a", 1, kGroup), std::runtime_error);
  const TraceLog log(0);
  EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultOk);
  // The run is over for the facade: its end waits for nothing, or there would be a line.
}

TEST_F(KalConfigHelperSubscriptionsTest, CountsARunThatThrewAsOver) {
  const TraceLog log(0);
  {
    KalConfigHelper facade(kCall);
    facade.SubscribeConfig("a", [](const KalConfigEvent&) { throw std::runtime_error("no"); }, kGroup);
    EXPECT_THROW(facade.SetKalConfig("a", 1, kGroup), std::runtime_error);
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(KalConfigHelperSubscriptionsTest, MakesTheOtherRecordsWhenOneThrowsWhileBinding) {
  KalConfigHelper setter(kCall);
  setter.SetKalConfig("a", 1, kGroup);
  setter.SetKalConfig("b", 1, kGroup);
  KalConfigHelper facade;
  facade.SubscribeConfig("a", [](const KalConfigEvent&) { throw std::runtime_error("no"); }, kGroup);
  facade.SubscribeConfig("b", Note("b"), kGroup);
  EXPECT_THROW(facade.SetCallId(kCall), std::runtime_error);
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk) << "bound all the same";
  EXPECT_EQ(setter.SetKalConfig("b", 2, kGroup), kResultOk);
  EXPECT_EQ(setter.SetKalConfig("a", 2, kGroup), kResultNobody);
  EXPECT_THAT(m_seen, ElementsAre("b:1", "b:2"));
}

TEST_F(KalConfigHelperSubscriptionsTest, LetsACallbackUseTheFacadeWhileItBinds) {
  KalConfigHelper setter(kCall);
  setter.SetKalConfig("a", "go", kGroup);
  KalConfigHelper facade;
  SubscribeId_t sameGroup = 0, laterGroup = 0;
  facade.SubscribeConfig(
      "a",
      [&](const KalConfigEvent&) {
        EXPECT_EQ(facade.GetKalConfig("a", kGroup), ConfigData("go"));
        EXPECT_EQ(facade.GetCallId(), kCall);
        EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
        if (sameGroup == 0) sameGroup = facade.SubscribeConfig("b", Note("b from callback"), kGroup);
        if (laterGroup == 0) laterGroup = facade.SubscribeConfig("c", Note("c from callback"), Group(5));
      },
      kGroup);
  facade.SubscribeConfig("b", Note("b recorded"), kGroup);
  facade.SubscribeConfig("c", Note("c recorded"), Group(5));
  facade.SetCallId(kCall);
  EXPECT_NE(sameGroup, 0U);
  EXPECT_NE(laterGroup, 0U);
  setter.SetKalConfig("b", 1, kGroup);
  setter.SetKalConfig("c", 1, Group(5));
  EXPECT_THAT(m_seen, ElementsAre("b from callback:1", "c from callback:1")) << "each made once";
  EXPECT_EQ(facade.UnsubscribeConfig(sameGroup), kResultOk);
  EXPECT_EQ(facade.UnsubscribeConfig(laterGroup), kResultOk);
  EXPECT_EQ(setter.SetKalConfig("b", 2, kGroup), kResultNobody);
  EXPECT_EQ(setter.SetKalConfig("c", 2, Group(5)), kResultNobody);
}

TEST_F(KalConfigHelperSubscriptionsTest, RefusesTheSameNameFromItsOwnInitialDelivery) {
  KalConfigHelper facade(kCall);
  facade.SetKalConfig("a", 1, kGroup);
  int calls = 0;
  const SubscribeId_t id = facade.SubscribeConfig(
      "a",
      [&](const KalConfigEvent&) {
        ++calls;
        EXPECT_EQ(facade.SubscribeConfig("a", Note("again"), kGroup), 0U);
        if (calls == 1) {
          EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultNotFound) << "no id yet";
        }
      },
      kGroup);
  EXPECT_NE(id, 0U);
  facade.SetKalConfig("a", 2, kGroup);
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(facade.UnsubscribeConfig(id), kResultOk);
  EXPECT_THAT(m_seen, IsEmpty());
}

TEST_F(KalConfigHelperSubscriptionsTest, MakesASubscriptionOnceForTwoThreads) {
  KalConfigHelper facade(kCall);
  for (int round = 0; round < 300; ++round) {
    std::atomic<int> ready{0};
    std::atomic<int> notified{0};
    SubscribeId_t ids[2] = {};
    std::thread threads[2];
    for (int i = 0; i < 2; ++i) {
      threads[i] = std::thread([&, i] {
        for (++ready; ready < 2;) std::this_thread::yield();
        ids[i] = facade.SubscribeConfig("a", [&](const KalConfigEvent&) { ++notified; }, kGroup);
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ((ids[0] != 0) + (ids[1] != 0), 1);
    notified = 0;
    EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup, true), kResultOk);
    EXPECT_EQ(notified, 1);
    EXPECT_EQ(facade.UnsubscribeConfig("a", kGroup), kResultOk);
    EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup, true), kResultNobody);
  }
}

TEST_F(KalConfigHelperSubscriptionsTest, LosesNoSubscriptionMadeWhileItBinds) {
  KalConfigHelper setter(kCall);
  for (int round = 0; round < 300; ++round) {
    KalConfigHelper facade;
    std::atomic<int> ready{0};
    std::atomic<int> notified{0};
    std::thread subscriber([&] {
      for (++ready; ready < 2;) std::this_thread::yield();
      facade.SubscribeConfig("a", [&](const KalConfigEvent&) { ++notified; }, kGroup);
      facade.SubscribeConfig("z", [&](const KalConfigEvent&) { ++notified; }, Group(12));
    });
    for (++ready; ready < 2;) std::this_thread::yield();
    facade.SetCallId(kCall);
    subscriber.join();
    notified = 0;
    setter.SetKalConfig("a", round, kGroup);
    setter.SetKalConfig("z", round, Group(12));
    EXPECT_EQ(notified, 2);
  }
}

TEST_F(KalConfigHelperSubscriptionsTest, RemovesEverythingAtItsEnd) {
  KalConfigHelper setter(kCall);
  const auto captured = std::make_shared<int>(0);
  {
    KalConfigHelper facade(kCall);
    facade.SubscribeConfig("a", [captured](const KalConfigEvent&) { ++*captured; }, kGroup);
    facade.SubscribeConfig("a", [captured](const KalConfigEvent&) { ++*captured; }, Group(0));
    facade.BindConfig("b", [captured](const KalConfigEvent&) { return ConfigData(1); }, kGroup);
    setter.SetKalConfig("a", 1, kGroup);
  }
  EXPECT_EQ(setter.SetKalConfig("a", 2, kGroup), kResultNobody);
  EXPECT_EQ(setter.SetKalConfig("a", 2, Group(0)), kResultNobody);
  EXPECT_FALSE(setter.GetDynamicConfig("b", kGroup).IsValid());
  EXPECT_EQ(*captured, 1);
  EXPECT_EQ(captured.use_count(), 1) << "what the callbacks captured is released";
}

TEST_F(KalConfigHelperSubscriptionsTest, ReleasesRecordsThatWereNeverMade) {
  const auto captured = std::make_shared<int>(0);
  {
    KalConfigHelper facade;
    facade.SubscribeConfig("a", [captured](const KalConfigEvent&) {}, kGroup);
    EXPECT_GT(captured.use_count(), 1);
  }
  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(KalConfigHelperSubscriptionsTest, KeepsPostedEventsFromUserCodeAfterItsEnd) {
  KalConfigHelper setter(kCall);
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  std::promise<void> release;
  std::atomic<int> late{0};
  {
    // Keeps the thread busy, so that the facade's events are still queued when it goes.
    KalConfigHelper blocker(kCall);
    std::promise<void> blocked;
    blocker.SubscribeConfig(
        "block",
        [&, released = release.get_future().share()](const KalConfigEvent&) {
          blocked.set_value();
          released.wait();
        },
        kGroup, &thread, true);
    setter.SetKalConfig("block", 1, kGroup);
    blocked.get_future().wait();
    {
      KalConfigHelper facade(kCall);
      facade.SubscribeConfig("a", [&](const KalConfigEvent&) { ++late; }, kGroup, &thread, true);
      for (int i = 0; i < 10; ++i) setter.SetKalConfig("a", i, kGroup);
    }
    release.set_value();
    thread.Stop();
  }
  EXPECT_EQ(late, 0);
}

// A facade whose only owner is the callback of one of its subscriptions.
class OwnedByItsCallback : public FacadeTest {
 protected:
  std::shared_ptr<KalConfigHelper> m_owner = std::make_shared<KalConfigHelper>(kCall);
  KalConfigHelper& m_facade = *m_owner;
  std::weak_ptr<KalConfigHelper> m_watch = m_owner;
};

TEST_F(OwnedByItsCallback, EndsWithTheSubscription) {
  const SubscribeId_t id =
      m_facade.SubscribeConfig("a", [owner = std::move(m_owner)](const KalConfigEvent&) {}, kGroup);
  EXPECT_EQ(m_facade.UnsubscribeConfig(id), kResultOk);
  EXPECT_TRUE(m_watch.expired());
}

TEST_F(OwnedByItsCallback, EndsWithTheSubscriptionRemovedByName) {
  m_facade.SubscribeConfig("a", [owner = std::move(m_owner)](const KalConfigEvent&) {}, kGroup);
  EXPECT_EQ(m_facade.UnsubscribeConfig("a", kGroup), kResultOk);
  EXPECT_TRUE(m_watch.expired());
}

TEST_F(OwnedByItsCallback, EndsWithTheBinding) {
  auto value = [owner = std::move(m_owner)](const KalConfigEvent&) { return ConfigData(1); };
  const SubscribeId_t id = m_facade.BindConfig("a", std::move(value), kGroup);
  EXPECT_EQ(m_facade.UnsubscribeConfig(id), kResultOk);
}

TEST_F(OwnedByItsCallback, EndsWithTheRecordThatIsReplaced) {
  auto owner = std::make_shared<KalConfigHelper>();
  KalConfigHelper& facade = *owner;
  const std::weak_ptr<KalConfigHelper> watch = owner;
  facade.SubscribeConfig("a", [owner = std::move(owner)](const KalConfigEvent&) {}, kGroup);
  EXPECT_EQ(facade.SubscribeConfig("a", [](const KalConfigEvent&) {}, kGroup), 0U);
  EXPECT_TRUE(watch.expired());
}

}  // namespace
}  // namespace kalStore
