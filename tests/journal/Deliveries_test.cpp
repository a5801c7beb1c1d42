// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "JournalTest.h"
#include "tessel/post.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class JournalDeliveries : public JournalStoreTest {
 protected:
  SubscribeId_t Subscribe(fnConfigChangedCallBack fn, ACmThread* thread = nullptr, bool async = false) {
    return m_store.SubscribeConfig(kVideo, "MaxFps", std::move(fn), thread, async);
  }
  std::int32_t Set(int value) { return m_store.SetKalConfig(kVideo, "MaxFps", value, false, false); }
};

TEST_F(JournalDeliveries, BeginWhenTheLastOneEndedAlsoByAnException) {
  Subscribe([](const KalConfigEvent&) { throw std::runtime_error("no"); });
  Subscribe([](const KalConfigEvent&) {});
  Events();
  EXPECT_THROW(Set(15), std::runtime_error);
  const auto events = Events({JournalKind::kDelivered});
  ASSERT_THAT(events, SizeIs(2));
  EXPECT_GT(events[0].ranNs, 0);
  EXPECT_EQ(events[1].timeNs, events[0].timeNs + events[0].ranNs);
}

TEST_F(JournalDeliveries, ThatASinkPostedWithinAnImportOutliveIt) {
  Set(15);
  ACmThread worker("worker");
  worker.Start();
  std::promise<void> isOver;
  Post(worker, [&] { isOver.get_future().wait(); });
  {
    const InTraceLine within("", [&] { Subscribe([](const KalConfigEvent&) {}, &worker, true); });
    m_store.ApplyKalConfigs(R"({"Video":[{"key":"Codec","value":"av1"}]})");
  }
  isOver.set_value();
  worker.Stop();
  const auto events = Events({JournalKind::kDelivered});
  ASSERT_THAT(events, SizeIs(1));
  EXPECT_EQ(events[0].line, 0u);
}

TEST_F(JournalDeliveries, ComeAfterTheirSetAndNameIt) {
  const SubscribeId_t first = Subscribe([](const KalConfigEvent&) {});
  const SubscribeId_t second = Subscribe([](const KalConfigEvent&) {});
  Events();
  EXPECT_EQ(Set(15), kResultOk);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events),
              ElementsAre(JournalKind::kSet, JournalKind::kDelivered, JournalKind::kDelivered));
  EXPECT_EQ(events[0].count, 2u);
  EXPECT_EQ(events[0].result, kResultOk);
  EXPECT_EQ(events[1].id, first);
  EXPECT_EQ(events[2].id, second);
  std::int64_t begin = events[0].timeNs;
  for (const JournalEvent& delivered : {events[1], events[2]}) {
    EXPECT_EQ(delivered.cause, events[0].number);
    EXPECT_EQ(delivered.way, JournalWay::kDirect);
    EXPECT_EQ(delivered.callId, kCall);
    EXPECT_EQ(delivered.group, kVideo);
    EXPECT_EQ(delivered.name.text, "MaxFps");
    EXPECT_EQ(ChangeOf(delivered), "- -> 15");
    EXPECT_EQ(delivered.timeNs - delivered.waitedNs, events[0].timeNs);
    EXPECT_GE(delivered.timeNs, begin);
    EXPECT_GE(delivered.ranNs, 0);
    EXPECT_FALSE(delivered.thrown);
    begin = delivered.timeNs + delivered.ranNs;
  }
}

TEST_F(JournalDeliveries, AreNoneToTheBindingOfTheName) {
  m_store.BindConfig(kVideo, "MaxFps", [](const KalConfigEvent&) { return ConfigData(30); });
  Events();
  EXPECT_EQ(Set(15), kResultNobody);
  Subscribe([](const KalConfigEvent&) {});
  EXPECT_EQ(Set(30), kResultOk);
  const auto sets = Events({JournalKind::kSet});
  ASSERT_THAT(sets, SizeIs(2));
  EXPECT_EQ(sets[0].result, kResultNobody);
  EXPECT_EQ(sets[0].count, 0u);
  EXPECT_EQ(sets[1].result, kResultOk);
  EXPECT_EQ(sets[1].count, 1u);
}

TEST_F(JournalDeliveries, HaveNoNameWhenTheirSetIsOverwritten) {
  int others = 0;
  Subscribe([&](const KalConfigEvent&) {
    for (; others < 1024; ++others) m_store.RemoveKalConfig(kVideo, "Other");
  });
  Set(15);
  const auto events = Events({JournalKind::kSet, JournalKind::kDelivered});
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kDelivered));
  EXPECT_NE(events[0].cause, 0u);
  EXPECT_EQ(events[0].group, kVideo);
  EXPECT_EQ(events[0].name.text, "");
  EXPECT_EQ(ChangeOf(events[0]), "- -> -");
}

TEST_F(JournalDeliveries, OfASetInACallbackComeBetween) {
  Subscribe([this](const KalConfigEvent& change) {
    if (change.m_newValue.ToInt() == 1) Set(2);
  });
  Events();
  Set(1);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kSet, JournalKind::kDelivered,
                                           JournalKind::kDelivered));
  EXPECT_EQ(events[1].newValue->text, "2");
  EXPECT_EQ(events[2].cause, events[1].number);
  EXPECT_EQ(events[3].cause, events[0].number);
}

TEST_F(JournalDeliveries, HandedOverRunOnTheirThread) {
  ACmThread worker("worker");
  worker.Start();
  Subscribe([](const KalConfigEvent&) {}, &worker);
  Events();
  {
    const JournalOrigin origin("setter");
    Set(15);
  }
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kDelivered));
  EXPECT_EQ(events[1].way, JournalWay::kHandedOver);
  EXPECT_EQ(events[1].threadId, worker.GetThreadId());
  EXPECT_EQ(events[1].cause, events[0].number);
  EXPECT_EQ(events[1].label.text, "setter");
  EXPECT_EQ(events[1].caller, events[0].caller);
  EXPECT_EQ(events[1].timeNs - events[1].waitedNs, events[0].timeNs);
}

TEST_F(JournalDeliveries, BeginWhenOneThatWasHandedOverHasEnded) {
  ACmThread worker("worker");
  worker.Start();
  Subscribe([](const KalConfigEvent&) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); },
            &worker);
  Subscribe([](const KalConfigEvent&) {});
  Events();
  Set(15);
  const auto events = Events({JournalKind::kDelivered});
  ASSERT_THAT(events, SizeIs(2));
  EXPECT_EQ(events[1].way, JournalWay::kDirect);
  EXPECT_GT(events[1].waitedNs, 0);
}

TEST_F(JournalDeliveries, OnTheirOwnRunThreadAreDirect) {
  ACmThread worker("worker");
  worker.Start();
  Subscribe([](const KalConfigEvent&) {}, &worker);
  Events();
  Send(worker, [this] { Set(15); });
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(2));
  EXPECT_EQ(events[1].way, JournalWay::kDirect);
}

TEST_F(JournalDeliveries, PostedKeepTheLabelOfTheSetter) {
  ACmThread worker("worker");
  worker.Start();
  Subscribe([](const KalConfigEvent&) {}, &worker, true);
  Events();
  const std::string longest(kJournalLongestLabel, 'x');
  for (const std::string& label : {longest, longest + "y", longest + longest}) {
    std::promise<void> isOver;
    Post(worker, [&] { isOver.get_future().wait(); });
    std::string own = label;
    {
      const JournalOrigin origin(own.c_str());
      m_store.SetKalConfig(kVideo, "MaxFps", 15, true, false);
    }
    own.assign(own.size(), '-');  // The setter's scope is over before the delivery.
    isOver.set_value();
    Send(worker, [] {});
    const auto events = Events();
    ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kDelivered));
    EXPECT_EQ(events[1].way, JournalWay::kPosted);
    EXPECT_EQ(events[1].threadId, worker.GetThreadId());
    EXPECT_EQ(events[1].label.text, longest);
    EXPECT_EQ(events[1].label.isCut, label != longest);
    EXPECT_EQ(events[0].label.isCut, label != longest);
  }
}

TEST_F(JournalDeliveries, SayWhatTheCallbackThrew) {
  Subscribe([](const KalConfigEvent&) { throw std::runtime_error("too many frames"); });
  Subscribe([](const KalConfigEvent&) { throw 1; });
  Events();
  EXPECT_THROW(Set(15), std::runtime_error);
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(3));
  EXPECT_EQ(events[1].thrown->text, "too many frames");
  EXPECT_EQ(events[2].thrown->text, "not a std::exception");
}

TEST_F(JournalDeliveries, SayWhatAPostedCallbackThrew) {
  ACmThread worker("worker");
  worker.Start();
  Subscribe([](const KalConfigEvent&) { throw std::runtime_error("late"); }, &worker, true);
  Events();
  Set(15);
  Send(worker, [] {});
  EXPECT_EQ(Events({JournalKind::kDelivered}).at(0).thrown->text, "late");
}

TEST_F(JournalDeliveries, ToAThreadWithoutAQueueAreDropped) {
  ACmThread notStarted("not started");
  ACmThread noQueue("no queue", false);
  noQueue.Start();
  Subscribe([](const KalConfigEvent&) {}, &notStarted, true);
  Subscribe([](const KalConfigEvent&) {}, &noQueue);
  Events();
  EXPECT_EQ(Set(15), kResultOk);
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(3));
  EXPECT_EQ(events[1].way, JournalWay::kDropped);
  EXPECT_EQ(events[2].way, JournalWay::kDropped);
  EXPECT_EQ(events[2].cause, events[0].number);
}

TEST_F(JournalDeliveries, ToAThreadThatStopsAreDropped) {
  ACmThread worker("worker");
  worker.Start();
  std::atomic<bool> hasStopped{false};
  Post(worker, [&] { hasStopped.wait(false); });
  Subscribe([](const KalConfigEvent&) { FAIL(); }, &worker, true);
  std::thread stopper([&] { worker.Stop(); });
  while (Post(worker, [] {}) != ESHUTDOWN) std::this_thread::yield();
  Events();
  EXPECT_EQ(Set(15), kResultOk);
  const auto events = Events();
  hasStopped = true;
  hasStopped.notify_all();
  stopper.join();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kDelivered));
  EXPECT_EQ(events[1].way, JournalWay::kDropped);
  EXPECT_EQ(events[1].cause, events[0].number);
  EXPECT_EQ(events[1].threadId, GetThreadSelfId());
}

TEST_F(JournalDeliveries, InitialOnesFollowTheirSubscription) {
  StopJournal();
  StartJournal(8192);  // No other test's capacity: a ring without records.
  Set(15);
  Events();
  const SubscribeId_t id = Subscribe([](const KalConfigEvent&) {});
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSubscribed, JournalKind::kDelivered));
  EXPECT_EQ(events[1].id, id);
  EXPECT_EQ(events[1].cause, 0u);
  EXPECT_EQ(events[1].name.text, "MaxFps");
  EXPECT_EQ(ChangeOf(events[1]), "- -> 15");
  EXPECT_EQ(events[1].caller, events[0].caller);
}

TEST_F(JournalDeliveries, InitialOnesThatThrowEndTheSubscription) {
  Set(15);
  Events();
  EXPECT_THROW(Subscribe([](const KalConfigEvent&) { throw std::runtime_error("no"); }), std::runtime_error);
  EXPECT_THAT(KindsOf(Events()),
              ElementsAre(JournalKind::kSubscribed, JournalKind::kDelivered, JournalKind::kEnded));
}

TEST_F(JournalDeliveries, AreWrittenAlthoughACallbackEndsTheStore) {
  IKalConfig* store = nullptr;
  CreateKalConfig(8, &store);
  store->SubscribeConfig(
      kVideo, "MaxFps",
      [&](const KalConfigEvent&) {
        CleanUpKalConfig(8);
        ReleaseKalConfig(store);
      },
      nullptr, false);
  Events();
  EXPECT_EQ(store->SetKalConfig(kVideo, "MaxFps", 15, false, false), kResultOk);
  EXPECT_THAT(KindsOf(Events()),
              ElementsAre(JournalKind::kSet, JournalKind::kStoreCleanedUp, JournalKind::kStoreEnded,
                          JournalKind::kEnded, JournalKind::kDelivered));
}

}  // namespace
}  // namespace kalStore
