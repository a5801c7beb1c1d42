// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

class StoreDelivery : public StoreTest {
 protected:
  StoreDelivery() { EXPECT_EQ(0, m_thread.Start()); }

  Recorder m_notified;
  ACmThread m_thread{"subscriber"};  // Stops first: what it runs uses the rest.
};

TEST_F(StoreDelivery, DirectRunsOnTheSettersThreadBeforeTheSetReturns) {
  Subscribe("name", m_notified.Callback());
  Set("name", "1");
  ASSERT_EQ(1U, m_notified.Count());
  EXPECT_EQ(GetThreadSelfId(), m_notified.At(0).threadId);
  std::thread setter([&] {
    Set("name", "2");
    ASSERT_EQ(2U, m_notified.Count());
    EXPECT_EQ(GetThreadSelfId(), m_notified.At(1).threadId);
  });
  setter.join();
}

TEST_F(StoreDelivery, DirectIgnoresTheAsynchronousFlagWithoutARunThread) {
  Subscribe("name", m_notified.Callback(), nullptr, true);
  Set("name", "1");
  EXPECT_EQ(1U, m_notified.Count());
}

TEST_F(StoreDelivery, HandedOverRunsOnTheRunThreadBeforeTheSetReturns) {
  Subscribe("name", m_notified.Callback(), &m_thread, false);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  ASSERT_EQ(1U, m_notified.Count());
  EXPECT_EQ(m_thread.GetThreadId(), m_notified.At(0).threadId);
  EXPECT_NE(GetThreadSelfId(), m_notified.At(0).threadId);
}

TEST_F(StoreDelivery, HandedOverRunsAtOnceWhenTheSetterIsTheRunThread) {
  Subscribe("name", m_notified.Callback(), &m_thread, false);
  Send(m_thread, [&] {
    Post(m_thread, [&] { m_notified.Add({}); });
    EXPECT_EQ(kResultOk, Set("name", "1"));
    ASSERT_EQ(1U, m_notified.Count());  // Not behind what is queued.
    EXPECT_EQ("name", m_notified.At(0).event.m_name);
  });
}

TEST_F(StoreDelivery, PostedRunsLaterOnTheRunThreadInTheOrderOfTheSets) {
  Gate go;
  Post(m_thread, [&] { go.Wait(); });
  Subscribe("name", m_notified.Callback(), &m_thread, true);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(kResultOk, Set("name", i));
  EXPECT_EQ(0U, m_notified.Count());
  const unsigned long threadId = m_thread.GetThreadId();
  go.Open();
  m_thread.Stop();
  ASSERT_EQ(100U, m_notified.Count());
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(i, m_notified.At(static_cast<std::size_t>(i)).event.m_newValue.ToInt(-1));
    EXPECT_EQ(threadId, m_notified.At(static_cast<std::size_t>(i)).threadId);
  }
}

TEST_F(StoreDelivery, PostedTakesItsTurnAmongEventsOfTheDefaultPriority) {
  std::string turns;
  Gate go;
  Post(m_thread, [&] { go.Wait(); });
  Subscribe(
      "name", [&](const KalConfigEvent& event) { turns += event.m_newValue.ToString(); }, &m_thread, true);
  for (const char* value : {"1", "2"}) {
    Post(m_thread, [&] { turns += "."; });
    Set("name", value);
  }
  go.Open();
  Send(m_thread, [&] { turns += "."; });
  EXPECT_EQ(".1.2.", turns);
}

TEST_F(StoreDelivery, PostedRunsLaterEvenFromTheRunThread) {
  Subscribe("name", m_notified.Callback(), &m_thread, true);
  Send(m_thread, [&] {
    EXPECT_EQ(kResultOk, Set("name", "1"));
    EXPECT_EQ(0U, m_notified.Count());
  });
  m_thread.Stop();
  EXPECT_EQ(1U, m_notified.Count());
}

TEST_F(StoreDelivery, PostedCarriesItsOwnCopies) {
  Gate go;
  Post(m_thread, [&] { go.Wait(); });
  Subscribe("name", m_notified.Callback(), &m_thread, true);
  {
    const std::string name = "name";
    const std::string text(100, 'x');
    Set(name.c_str(), text);
  }
  Set("name", "2");
  m_store.RemoveKalConfigByGroup(kAudio);
  go.Open();
  m_thread.Stop();
  EXPECT_THAT(m_notified.Values(), ElementsAre(std::string(100, 'x'), "2"));
  EXPECT_EQ(std::string(100, 'x'), m_notified.At(1).event.m_oldValue.ToCstr());
}

TEST_F(StoreDelivery, GoesOnAfterTheStoreIsGoneForWhatWasPosted) {
  Gate go;
  Post(m_thread, [&] { go.Wait(); });
  auto store = std::make_unique<KalConfig>(6);
  store->SubscribeConfig(kAudio, "name", m_notified.Callback(), &m_thread, true);
  store->SetKalConfig(kAudio, "name", "1", false, false);
  store.reset();
  go.Open();
  m_thread.Stop();
  EXPECT_EQ(1U, m_notified.Count());
}

TEST_F(StoreDelivery, OfTheInitialValueTakesTheSameWay) {
  Set("name", "1");
  Recorder handedOver;
  EXPECT_NE(0U, Subscribe("name", handedOver.Callback(), &m_thread, false));
  ASSERT_EQ(1U, handedOver.Count());
  EXPECT_EQ(m_thread.GetThreadId(), handedOver.At(0).threadId);

  Gate go;
  Post(m_thread, [&] { go.Wait(); });
  Recorder posted;
  EXPECT_NE(0U, Subscribe("name", posted.Callback(), &m_thread, true));
  EXPECT_EQ(0U, posted.Count());
  go.Open();
  m_thread.Stop();
  EXPECT_EQ(1U, posted.Count());
}

TEST_F(StoreDelivery, IsDroppedWithALineForARunThreadWithoutAQueue) {
  ACmThread mute("mute", false);
  ASSERT_EQ(0, mute.Start());
  ACmThread stopped;
  for (const bool async : {false, true}) {
    for (ACmThread* thread : {&mute, &stopped}) {
      Set("name", "1");
      TraceLog log(0);
      const SubscribeId_t id = Subscribe("name", m_notified.Callback(), thread, async);
      EXPECT_NE(0U, id);
      EXPECT_EQ(1U, log.Lines().size());
      EXPECT_EQ(kResultOk, Set("name", "2"));  // Counts as notified.
      ASSERT_EQ(2U, log.Lines().size());
      EXPECT_THAT(log.Lines()[1].text,
                  ::testing::StartsWith("kalStore::ConfigEventHandler::Notify, m_pRunThread=0x" +
                                        HexOf(thread) + ", EventQueue == NULL [this=0x"));
      EXPECT_EQ(2U, log.CountLevel(0));
      EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    }
  }
  EXPECT_EQ(0U, m_notified.Count());
}

TEST_F(StoreDelivery, MixesAllWaysInOneSet) {
  Recorder posted;
  Recorder handedOver;
  Subscribe("name", posted.Callback(), &m_thread, true);
  Subscribe("name", handedOver.Callback(), &m_thread, false);
  Subscribe("name", m_notified.Callback());
  TraceLog log;
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(1U, m_notified.Count());
  EXPECT_EQ(1U, handedOver.Count());
  EXPECT_EQ(1U, posted.Count());  // It was queued before the one handed over.
  EXPECT_EQ((std::vector<std::string>{"kalStore::KalConfig::fireEvents, nObservers=3" + Suffix()}),
            log.Matching("nObservers"));
}

TEST_F(StoreDelivery, NotifiesMoreSubscribersThanFitTheStack) {
  constexpr int kSubscribers = 100;
  for (int i = 0; i < kSubscribers; ++i) {
    Subscribe("name", m_notified.Callback());
    if (i % 10 == 0) {
      m_store.BindConfig(kAudio, "name", [](const KalConfigEvent&) { return ConfigValue("bound"); });
    }
  }
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(static_cast<std::size_t>(kSubscribers), m_notified.Count());
}

TEST_F(StoreDelivery, ReachesANestedSetOfAnotherNameFromTheRunThread) {
  Subscribe("outer", [&](const KalConfigEvent&) { Set("inner", "1"); }, &m_thread, false);
  Subscribe("inner", m_notified.Callback(), &m_thread, false);
  Set("outer", "1");
  ASSERT_EQ(1U, m_notified.Count());
  EXPECT_EQ(m_thread.GetThreadId(), m_notified.At(0).threadId);
}

TEST(ConfigEventHandlerNotify, IsFalseWithoutAChangeCallback) {
  ConfigEventHandler handler;
  EXPECT_FALSE(handler.Notify({}));
  handler.m_fnInvoke = [](const KalConfigEvent&) { return ConfigValue("1"); };
  EXPECT_FALSE(handler.Notify({}));
  EXPECT_EQ(0, handler.m_nCallLevel);
}

TEST(ConfigEventHandlerNotify, RaisesTheCallLevelWhileItRuns) {
  ConfigEventHandler handler;
  int level = 0;
  handler.m_fnNotify = [&](const KalConfigEvent&) { level = handler.m_nCallLevel; };
  EXPECT_TRUE(handler.Notify({}));
  EXPECT_EQ(1, level);
  EXPECT_EQ(0, handler.m_nCallLevel);
}

TEST(ConfigEventHandlerInvoke, GivesAnEmptyValueWithoutACallback) {
  ConfigEventHandler handler;
  EXPECT_FALSE(handler.Invoke({}).IsValid());
  handler.m_fnInvoke = [&](const KalConfigEvent& event) {
    EXPECT_EQ(1, handler.m_nCallLevel);
    return event.m_defaultValue;
  };
  EXPECT_STREQ("7", handler.Invoke({"name", {}, {}, 7}).ToCstr());
  EXPECT_EQ(0, handler.m_nCallLevel);
}

TEST(ConfigEventHandler, StartsEmpty) {
  const ConfigEventHandler handler;
  EXPECT_EQ(0U, handler.m_SubscribeId);
  EXPECT_EQ(-1, handler.m_group);
  EXPECT_EQ("", handler.m_strName);
  EXPECT_EQ(0, handler.m_nCallLevel);
  EXPECT_EQ(0, handler.m_nPendingNotify);
  EXPECT_EQ(0U, handler.m_notifyThreadId);
  EXPECT_EQ(nullptr, handler.m_pRunThread);
  EXPECT_FALSE(handler.m_bAsync);
  EXPECT_FALSE(handler.m_bRegistered);
}

TEST(KalConfigObserverMgr, RefusesWhatItCannotKeep) {
  KalConfigObserverMgr<ConfigEventHandler::Ptr> observers;
  const auto handler = std::make_shared<ConfigEventHandler>();
  int added = 0;
  const auto onAdded = [&](const ConfigEventHandler::Ptr& it) {
    EXPECT_EQ(handler, it);
    ++added;
  };
  EXPECT_EQ(kResultBadArgument, observers.Subscribe("", handler, onAdded));
  EXPECT_EQ(kResultBadArgument, observers.Subscribe("name", nullptr, onAdded));
  EXPECT_EQ(0, added);
  EXPECT_EQ(kResultOk, observers.Subscribe("name", handler, onAdded));
  EXPECT_EQ(kResultNoSuchOrExists, observers.Subscribe("name", handler, onAdded));
  EXPECT_EQ(1, added);
  EXPECT_EQ(kResultOk, observers.Subscribe("name2", handler, onAdded));
}

TEST(KalConfigObserverMgr, AHandlerStaysWhileWhatRunsOnItAddsOthers) {
  KalConfigObserverMgr<ConfigEventHandler::Ptr> observers;
  const auto handler = std::make_shared<ConfigEventHandler>();
  observers.Subscribe("name", handler, [&](const ConfigEventHandler::Ptr& added) {
    for (int i = 0; i < 100; ++i) {
      observers.Subscribe("name", std::make_shared<ConfigEventHandler>(), [](const auto&) {});
    }
    EXPECT_EQ(handler, added);
  });
}

TEST(KalConfigObserverMgr, KeepsANameAfterItsLastHandler) {
  using Observers = KalConfigObserverMgr<ConfigEventHandler::Ptr>;
  Observers observers;
  const auto handler = std::make_shared<ConfigEventHandler>();
  int removed = 0;
  EXPECT_EQ(kResultNoSuchOrExists, observers.Unsubscribe("name", handler, [&] { ++removed; }));
  observers.Subscribe("name", handler, [](const ConfigEventHandler::Ptr&) {});
  EXPECT_EQ(kResultNoSuchOrExists, observers.Unsubscribe("name", nullptr, [&] { ++removed; }));
  EXPECT_EQ(kResultOk, observers.Unsubscribe("name", handler, [&] { ++removed; }));
  EXPECT_EQ(kResultNoSuchOrExists, observers.Unsubscribe("name", handler, [&] { ++removed; }));
  EXPECT_EQ(1, removed);
  Observers::Locked names(observers);
  EXPECT_EQ(1U, names->size());
  EXPECT_TRUE(names->begin()->second.handlers.empty());
}

}  // namespace
}  // namespace kalStore
