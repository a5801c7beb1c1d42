// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

class StoreValues : public StoreTest {};

TEST_F(StoreValues, AreAbsentInAFreshStore) {
  for (int group = 0; group < 13; ++group) EXPECT_EQ("(none)", Get(Group(group), "name"));
}

TEST_F(StoreValues, AreStoredWithNobodyToNotify) {
  EXPECT_EQ(kResultNobody, Set("name", "1"));
  EXPECT_EQ("1", Get("name"));
}

TEST_F(StoreValues, OfOneGroupAreNoneOfAnother) {
  for (int group = 0; group < 13; ++group) {
    EXPECT_EQ(kResultNobody, m_store.SetKalConfig(Group(group), "name", group, false, false));
  }
  for (int group = 0; group < 13; ++group) EXPECT_EQ(std::to_string(group), Get(Group(group), "name"));
}

TEST_F(StoreValues, OfSeveralStoresAreSeparate) {
  KalConfig other(5);
  Set("name", "1");
  ConfigData value;
  EXPECT_EQ(kResultNotFound, other.GetKalConfig(kAudio, "name", value));
}

TEST_F(StoreValues, AreOverwritten) {
  Set("name", "1");
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  EXPECT_EQ("2", Get("name"));
}

TEST_F(StoreValues, AnswerUnchangedForAnEqualValue) {
  Set("name", "1");
  EXPECT_EQ(kResultUnchanged, Set("name", "1"));
  EXPECT_EQ(kResultUnchanged, Set("name", 1));
  EXPECT_EQ(kResultUnchanged, Set("name", true));
  EXPECT_EQ(kResultNobody, Set("name", "1.0"));
}

TEST_F(StoreValues, AnswerNobodyForAForcedEqualValue) {
  Set("name", "1");
  EXPECT_EQ(kResultNobody, Set("name", "1", true));
}

TEST_F(StoreValues, MayBeTheEmptyString) {
  EXPECT_EQ(kResultNobody, Set("name", ""));
  ConfigData value("before");
  EXPECT_EQ(kResultOk, m_store.GetKalConfig(kAudio, "name", value));
  EXPECT_TRUE(value.IsValid());
  EXPECT_STREQ("", value.ToCstr());
  EXPECT_EQ(kResultUnchanged, Set("name", ""));
}

TEST_F(StoreValues, HaveNamesOfAnyBytesThatDifferInCase) {
  const char* const names[] = {"a", "A", " ", "a b", "\xff\x01", "na/me"};
  for (const char* name : names) Set(name, name);
  for (const char* name : names) EXPECT_EQ(name, Get(name));
  const std::string longName(100000, 'n');
  Set(longName.c_str(), "long");
  EXPECT_EQ("long", Get(longName.c_str()));
}

TEST_F(StoreValues, RefuseAnInvalidValueWithALineAndKeepTheOldOne) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Set("name", "1");
  TraceLog log(0);
  EXPECT_EQ(kResultBadArgument, Set("name", ConfigData()));
  EXPECT_EQ(kResultBadArgument, Set("name", ConfigData(), true));
  EXPECT_EQ(kResultBadArgument, Set("name", ConfigData(), false, true));
  EXPECT_EQ(kResultBadArgument, Set("name", static_cast<const char*>(nullptr)));
  EXPECT_EQ("1", Get("name"));
  EXPECT_EQ(1U, notified.Count());
  EXPECT_EQ(std::vector<std::string>(4, "kalStore::KalConfig::SetKalConfigError parameters" + Suffix()),
            log.Matching(""));
}

TEST_F(StoreValues, RefuseGroupsAboveTwelve) {
  for (const KalConfigGroup group : NoGroups()) {
    TraceLog log;
    ConfigData value("before");
    EXPECT_EQ(kResultBadArgument, m_store.GetKalConfig(group, "name", value));
    EXPECT_EQ(kResultBadArgument, m_store.RemoveKalConfig(group, "name"));
    EXPECT_EQ(kResultBadArgument, m_store.RemoveKalConfigByGroup(group));
    EXPECT_TRUE(log.Lines().empty());
    EXPECT_EQ(kResultBadArgument, m_store.SetKalConfig(group, "name", "1", false, false));
    EXPECT_THAT(log.Matching(""),
                ElementsAre("kalStore::KalConfig::SetKalConfigError parameters" + Suffix()));
    log.Clear();
    EXPECT_EQ(kResultBadArgument, m_store.GetDynamicConfig(group, "name", value, "1"));
    EXPECT_THAT(log.Matching(""),
                ElementsAre("kalStore::KalConfig::GetDynamicConfigError parameters" + Suffix()));
    EXPECT_EQ(0, log.Lines()[0].level);
    EXPECT_STREQ("before", value.ToCstr());
  }
  EXPECT_STREQ("{}", m_store.DumpKalConfigs(0xFFFFE000U));
}

TEST_F(StoreValues, RefuseANullName) {
  TraceLog log;
  ConfigData value("before");
  EXPECT_EQ(kResultBadArgument, m_store.GetKalConfig(kAudio, nullptr, value));
  EXPECT_EQ(kResultBadArgument, m_store.RemoveKalConfig(kAudio, nullptr));
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_EQ(kResultBadArgument, Set(nullptr, "1"));
  EXPECT_EQ(kResultBadArgument, m_store.GetDynamicConfig(kAudio, nullptr, value, "1"));
  EXPECT_THAT(log.Matching(""),
              ElementsAre("kalStore::KalConfig::SetKalConfigError parameters" + Suffix(),
                          "kalStore::KalConfig::GetDynamicConfigError parameters" + Suffix()));
  EXPECT_STREQ("before", value.ToCstr());
}

TEST_F(StoreValues, RefuseAnEmptyNameWithoutALine) {
  TraceLog log;
  ConfigData value("before");
  EXPECT_EQ(kResultBadArgument, Set("", "1"));
  EXPECT_EQ(kResultBadArgument, Set("", "1", true, true));
  EXPECT_EQ(kResultBadArgument, m_store.GetKalConfig(kAudio, "", value));
  EXPECT_EQ(kResultBadArgument, m_store.GetDynamicConfig(kAudio, "", value, "1"));
  EXPECT_EQ(kResultBadArgument, m_store.RemoveKalConfig(kAudio, ""));
  EXPECT_STREQ("before", value.ToCstr());
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_STREQ("{\"Audio\":[]}", m_store.DumpKalConfigs(1U << kAudio));
}

TEST_F(StoreValues, MakeTheOutputInvalidWhenTheyAreMissing) {
  TraceLog log;
  ConfigData value("before");
  EXPECT_EQ(kResultNotFound, m_store.GetKalConfig(kAudio, "name", value));
  EXPECT_FALSE(value.IsValid());
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreValues, AnnouncedOnlyAreNotStored) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultOk, Set("name", "1", false, true));
  EXPECT_EQ("(none)", Get("name"));
  ASSERT_EQ(1U, notified.Count());
  EXPECT_FALSE(notified.At(0).event.m_oldValue.IsValid());
  EXPECT_STREQ("1", notified.At(0).event.m_newValue.ToCstr());
}

TEST_F(StoreValues, AreRemovedByATransientSetThatNotifiesOfThemAsOld) {
  Set("name", "1");
  Recorder notified;
  Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultOk, Set("name", "2", false, true));
  ConfigData value("before");
  EXPECT_EQ(kResultNotFound, m_store.GetKalConfig(kAudio, "name", value));
  EXPECT_FALSE(value.IsValid());
  ASSERT_EQ(2U, notified.Count());
  EXPECT_STREQ("1", notified.At(1).event.m_oldValue.ToCstr());
  EXPECT_STREQ("2", notified.At(1).event.m_newValue.ToCstr());
}

TEST_F(StoreValues, AreRemovedByATransientSetOfAnEqualValueThatNotifiesNobody) {
  Set("name", "1");
  Recorder notified;
  Subscribe("name", notified.Callback());
  EXPECT_EQ(kResultUnchanged, Set("name", "1", false, true));
  EXPECT_EQ("(none)", Get("name"));
  EXPECT_EQ(1U, notified.Count());
  EXPECT_EQ(kResultNobody, Set("other", "1", false, true));
}

TEST_F(StoreValues, AreRemovedSilently) {
  Set("name", "1");
  Set("name2", "2");
  Recorder notified;
  Subscribe("name", notified.Callback());
  TraceLog log;
  EXPECT_EQ(kResultOk, m_store.RemoveKalConfig(kAudio, "name"));
  EXPECT_EQ(kResultOk, m_store.RemoveKalConfig(kAudio, "name"));
  EXPECT_EQ(kResultOk, m_store.RemoveKalConfig(kVideo, "name2"));
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::KalConfig::RemoveKalConfig, name, ret=1" + Suffix(),
                                            "kalStore::KalConfig::RemoveKalConfig, name, ret=0" + Suffix(),
                                            "kalStore::KalConfig::RemoveKalConfig, name2, ret=0" + Suffix()));
  EXPECT_EQ(3U, log.CountLevel(2));
  EXPECT_EQ("(none)", Get("name"));
  EXPECT_EQ("2", Get("name2"));
  EXPECT_EQ(1U, notified.Count());
}

TEST_F(StoreValues, AreRemovedByGroupSilentlyAndSubscriptionsStay) {
  Set("a", "1");
  Set("b", "2");
  m_store.SetKalConfig(kVideo, "a", "3", false, false);
  Recorder notified;
  Subscribe("a", notified.Callback());
  Bind("b", [](const KalConfigEvent&) { return ConfigValue("bound"); });
  TraceLog log;
  EXPECT_EQ(kResultOk, m_store.RemoveKalConfigByGroup(kAudio));
  EXPECT_EQ(kResultOk, m_store.RemoveKalConfigByGroup(kAudio));
  EXPECT_THAT(log.Matching(""),
              ElementsAre("kalStore::KalConfig::RemoveKalConfigByGroup, size=2" + Suffix(),
                          "kalStore::KalConfig::RemoveKalConfigByGroup, size=0" + Suffix()));
  EXPECT_EQ(2U, log.CountLevel(2));
  EXPECT_EQ("(none)", Get("a"));
  EXPECT_EQ("(none)", Get("b"));
  EXPECT_EQ("3", Get(kVideo, "a"));
  EXPECT_EQ(1U, notified.Count());
  EXPECT_EQ(kResultOk, Set("a", "1"));  // As new: the old value is gone.
  ASSERT_EQ(2U, notified.Count());
  EXPECT_FALSE(notified.At(1).event.m_oldValue.IsValid());
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "b", value, {}));
}

TEST_F(StoreValues, MayBeUsedFromSeveralThreadsAtOnce) {
  const auto work = [this](int group) {
    for (int i = 0; i < 200; ++i) {
      m_store.SetKalConfig(Group(group), "name", i, false, false);
      Get(Group(group), "name");
      m_store.RemoveKalConfig(Group(group), "name");
      Get(Group(12 - group), "name");
    }
  };
  std::thread first(work, 0);
  std::thread second(work, 0);
  work(12);
  first.join();
  second.join();
  EXPECT_EQ("(none)", Get(Group(0), "name"));
}

TEST(StoreLifetime, IsTracedWithItsCall) {
  TraceLog log;
  std::string suffix;
  {
    const KalConfig store(4294967295U);
    suffix = " [cid=4294967295]" + ThisText(&store);
  }
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::KalConfig::KalConfig" + suffix,
                                            "kalStore::KalConfig::~KalConfig" + suffix));
  EXPECT_EQ(2U, log.CountLevel(2));
}

TEST(StoreLifetime, EndsWhatItsSubscriptionsCaptured) {
  auto captured = std::make_shared<int>(1);
  {
    KalConfig store(5);
    store.SubscribeConfig(
        KAL_CONFIG_GROUP_AUDIO, "name", [captured](const KalConfigEvent&) {}, nullptr, false);
    store.BindConfig(KAL_CONFIG_GROUP_AUDIO, "name",
                     [captured](const KalConfigEvent&) { return ConfigValue(); });
    EXPECT_EQ(3, captured.use_count());
  }
  EXPECT_EQ(1, captured.use_count());
}

}  // namespace
}  // namespace kalStore
