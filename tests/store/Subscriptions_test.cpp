// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

ConfigValue NoValue(const KalConfigEvent&) {
  return {};
}

// The last id of a store, which a stray pointer reaches: an explicit instantiation may name what is private.
std::atomic<std::uint64_t> KalConfig::* LastId();
template <auto member>
struct Reached {
  friend std::atomic<std::uint64_t> KalConfig::* LastId() { return member; }
};
template struct Reached<&KalConfig::m_nSubscribeSeq>;

class StoreSubscriptions : public StoreTest {};

TEST_F(StoreSubscriptions, HaveIdsFromOneUpwardSharedWithBindings) {
  Recorder notified;
  EXPECT_EQ(1U, Subscribe("name", notified.Callback()));
  EXPECT_EQ(2U, Bind("name", NoValue));
  EXPECT_EQ(0U, Bind("name", NoValue));  // Refused, and its id is lost.
  EXPECT_EQ(4U, m_store.SubscribeConfig(kVideo, "name", notified.Callback(), nullptr, false));
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(4));
  EXPECT_EQ(5U, Subscribe("name", notified.Callback()));
  EXPECT_EQ(1U, KalConfig(6).SubscribeConfig(kAudio, "name", notified.Callback(), nullptr, false));
}

TEST_F(StoreSubscriptions, ReportAnIdThatAnotherOneHas) {
  const std::string assertion = "[KAL_ASSERT] KalConfig:";
  const std::string failed = " Assert failed: !m_mapIDs.Find(handlerPtr->m_SubscribeId)";
  const TraceLog log(0);
  Recorder notified;
  EXPECT_EQ(1U, Subscribe("name", notified.Callback()));
  m_store.*LastId() = 0;
  EXPECT_EQ(1U, Subscribe("name", notified.Callback()));
  m_store.*LastId() = 0;
  EXPECT_EQ(1U, Bind("name", NoValue));
  EXPECT_THAT(log.Matching("Assert"), ElementsAre(assertion + "557" + failed, assertion + "612" + failed));
}

TEST_F(StoreSubscriptions, LoseNoIdToBadArguments) {
  Recorder notified;
  EXPECT_EQ(0U, Subscribe("", notified.Callback()));
  EXPECT_EQ(0U, Subscribe(nullptr, notified.Callback()));
  EXPECT_EQ(0U, Subscribe("name", nullptr));
  EXPECT_EQ(0U, Bind("", NoValue));
  EXPECT_EQ(0U, Bind("name", nullptr));
  EXPECT_EQ(1U, Subscribe("name", notified.Callback()));
}

TEST_F(StoreSubscriptions, AreRefusedWithALineForBadArguments) {
  const std::string bad = "kalStore::KalConfig::subscribeConfigError parameters";
  Recorder notified;
  TraceLog log(0);
  EXPECT_EQ(0U, Subscribe(nullptr, notified.Callback()));
  EXPECT_EQ(0U, Subscribe("name", nullptr));
  EXPECT_EQ(0U, Subscribe("", nullptr));
  EXPECT_EQ(0U, Subscribe("", notified.Callback()));
  EXPECT_THAT(log.Matching(""), ElementsAre(bad + " 0" + Suffix(), bad + " 0" + Suffix(),
                                            bad + " 0" + Suffix(), bad + Suffix()));
  for (const KalConfigGroup group : NoGroups()) {
    log.Clear();
    EXPECT_EQ(0U, m_store.SubscribeConfig(group, "name", notified.Callback(), nullptr, false));
    EXPECT_THAT(log.Matching(""), ElementsAre(bad + " 0" + Suffix()));
  }
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreSubscriptions, AreNotifiedOfTheStoredValueAtOnce) {
  Set("name", "1");
  Recorder notified;
  EXPECT_EQ(1U, Subscribe("name", notified.Callback()));
  ASSERT_EQ(1U, notified.Count());
  const Recorder::Notification first = notified.At(0);
  EXPECT_EQ(GetThreadSelfId(), first.threadId);
  EXPECT_EQ("name", first.event.m_name);
  EXPECT_FALSE(first.event.m_oldValue.IsValid());
  EXPECT_STREQ("1", first.event.m_newValue.ToCstr());
  EXPECT_FALSE(first.event.m_defaultValue.IsValid());
  EXPECT_EQ(kAudio, first.event.m_group);
  EXPECT_EQ(kal::KAL_SESSION_AUDIO, first.event.m_sessionType);
}

TEST_F(StoreSubscriptions, AreNotNotifiedAtOnceWithoutAStoredValue) {
  Recorder notified;
  Set("other", "1");
  m_store.SetKalConfig(kVideo, "name", "1", false, false);
  Set("name", "1", false, true);
  Subscribe("name", notified.Callback());
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreSubscriptions, AreNotAskedForABoundValueAtOnce) {
  bool isAsked = false;
  Bind("name", [&](const KalConfigEvent&) {
    isAsked = true;
    return ConfigValue("1");
  });
  Recorder notified;
  EXPECT_NE(0U, Subscribe("name", notified.Callback()));
  EXPECT_FALSE(isAsked);
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreSubscriptions, DoNotNotifyOthersWhenTheyAreMade) {
  Set("name", "1");
  Recorder first;
  Recorder second;
  Subscribe("name", first.Callback());
  Subscribe("name", second.Callback());
  EXPECT_EQ(1U, first.Count());
  EXPECT_EQ(1U, second.Count());
}

TEST_F(StoreSubscriptions, AreNotifiedInTheOrderOfRegistration) {
  std::vector<int> order;
  for (int i = 0; i < 20; ++i) Subscribe("name", [&order, i](const KalConfigEvent&) { order.push_back(i); });
  Set("name", "1");
  ASSERT_EQ(20U, order.size());
  for (int i = 0; i < 20; ++i) EXPECT_EQ(i, order[static_cast<std::size_t>(i)]);
}

TEST_F(StoreSubscriptions, AreNotifiedOfTheirOwnGroupAndNameAlone) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Set("name2", "1");
  Set("nam", "1");
  m_store.SetKalConfig(kVideo, "name", "1", false, false);
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreSubscriptions, AreNotifiedWithTheSessionTypeOfTheirGroup) {
  const int types[] = {15, 15, 15, 0, 3, 1, 2, 4, 5, 14, 15, 15, 15};
  for (int group = 0; group < 13; ++group) {
    Recorder notified;
    const SubscribeId_t id =
        m_store.SubscribeConfig(Group(group), "name", notified.Callback(), nullptr, false);
    EXPECT_EQ(kResultOk, m_store.SetKalConfig(Group(group), "name", "1", false, false));
    ASSERT_EQ(1U, notified.Count());
    EXPECT_EQ(types[group], notified.At(0).event.m_sessionType);
    EXPECT_EQ(group, notified.At(0).event.m_group);
    m_store.UnsubscribeConfig(id);
  }
}

TEST_F(StoreSubscriptions, AreNotifiedOfOldAndNewValue) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(kResultOk, Set("name", "2"));
  ASSERT_EQ(2U, notified.Count());
  EXPECT_FALSE(notified.At(0).event.m_oldValue.IsValid());
  EXPECT_STREQ("1", notified.At(1).event.m_oldValue.ToCstr());
  EXPECT_STREQ("2", notified.At(1).event.m_newValue.ToCstr());
  EXPECT_FALSE(notified.At(1).event.m_defaultValue.IsValid());
}

TEST_F(StoreSubscriptions, AreNotNotifiedOfAnEqualValueUnlessForced) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Set("name", "1");
  EXPECT_EQ(kResultUnchanged, Set("name", "1"));
  EXPECT_EQ(1U, notified.Count());
  EXPECT_EQ(kResultOk, Set("name", "1", true));
  ASSERT_EQ(2U, notified.Count());
  EXPECT_STREQ("1", notified.At(1).event.m_oldValue.ToCstr());
  EXPECT_STREQ("1", notified.At(1).event.m_newValue.ToCstr());
}

TEST_F(StoreSubscriptions, SeeTheValueStoredAlready) {
  std::string seen;
  Subscribe("name", [&](const KalConfigEvent&) { seen = Get("name"); });
  Set("name", "1");
  EXPECT_EQ("1", seen);
}

TEST_F(StoreSubscriptions, MaySetTheValueTheyWatch) {
  Recorder notified;
  Subscribe("name", [&](const KalConfigEvent& event) {
    notified.Add(event);
    const int value = event.m_newValue.ToInt();
    if (value < 3) {
      EXPECT_EQ(kResultOk, Set("name", value + 1));
    }
  });
  EXPECT_EQ(kResultOk, Set("name", 1));
  EXPECT_THAT(notified.Values(), ElementsAre("1", "2", "3"));
  EXPECT_EQ("3", Get("name"));
}

TEST_F(StoreSubscriptions, MaySubscribeBindAndRemoveOthersFromACallback) {
  Recorder notified;
  SubscribeId_t added = 0;
  Subscribe("name", [&](const KalConfigEvent&) {
    if (added != 0) return;
    added = Subscribe("name", notified.Callback());
    EXPECT_NE(0U, Bind("name", NoValue));
    EXPECT_NE(0U, m_store.SubscribeConfig(kVideo, "name", notified.Callback(), nullptr, false));
  });
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(1U, notified.Count());  // Its initial delivery; the change was announced before it came.
  EXPECT_EQ(kResultOk, Set("name", "2"));
  EXPECT_EQ(2U, notified.Count());
}

TEST_F(StoreSubscriptions, AreNotifiedOfASetAnnouncedBeforeTheirRemovalBegan) {
  Recorder notified;
  SubscribeId_t second = 0;
  std::thread remover;
  Subscribe("name", [&](const KalConfigEvent&) {
    remover = std::thread([&] { EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(second)); });
  });
  second = Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultOk, Set("name", "1"));
  remover.join();
  EXPECT_EQ(1U, notified.Count());
}

TEST_F(StoreSubscriptions, AreCountedUntilTheyAreRemoved) {
  EXPECT_EQ("0", TotalObservers());
  Recorder notified;
  const SubscribeId_t first = Subscribe("name", notified.Callback());
  const SubscribeId_t second = Bind("name", NoValue);
  EXPECT_EQ("2", TotalObservers());
  Bind("name", NoValue);
  m_store.UnsubscribeConfig(999);
  EXPECT_EQ("2", TotalObservers());
  m_store.UnsubscribeConfig(first);
  m_store.UnsubscribeConfig(first);
  EXPECT_EQ("1", TotalObservers());
  m_store.UnsubscribeConfig(second);
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreSubscriptions, SurviveTheRemovalOfTheValue) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Set("name", "1");
  m_store.RemoveKalConfig(kAudio, "name");
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(2U, notified.Count());
}

}  // namespace
}  // namespace kalStore
