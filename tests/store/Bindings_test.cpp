// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

class StoreBindings : public StoreTest {
 protected:
  static fnConfigInvokeCallBack Returning(const char* text) {
    return [text](const KalConfigEvent&) { return ConfigValue(text); };
  }
};

TEST_F(StoreBindings, ComputeAValueOnEveryRead) {
  int calls = 0;
  Bind("name", [&](const KalConfigEvent&) { return ConfigValue(++calls); });
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("1", value.ToCstr());
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("2", value.ToCstr());
}

TEST_F(StoreBindings, AreAskedOnTheReadersThreadWithTheDefault) {
  Recorder asked;
  Bind("name", [&](const KalConfigEvent& event) {
    asked.Add(event);
    return event.m_defaultValue;
  });
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, 7));
  EXPECT_STREQ("7", value.ToCstr());
  std::thread reader([&] {
    ConfigData other;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", other, {}));
    EXPECT_FALSE(other.IsValid());
    EXPECT_EQ(GetThreadSelfId(), asked.At(1).threadId);
  });
  reader.join();
  const KalConfigEvent event = asked.At(0).event;
  EXPECT_EQ(GetThreadSelfId(), asked.At(0).threadId);
  EXPECT_EQ("name", event.m_name);
  EXPECT_FALSE(event.m_oldValue.IsValid());
  EXPECT_FALSE(event.m_newValue.IsValid());
  EXPECT_EQ(kAudio, event.m_group);
  EXPECT_EQ(kal::KAL_SESSION_AUDIO, event.m_sessionType);
}

TEST_F(StoreBindings, AreNotCalledWhenTheyAreMadeNorByASet) {
  bool isAsked = false;
  Set("name", "1");
  Bind("name", [&](const KalConfigEvent&) {
    isAsked = true;
    return ConfigValue("2");
  });
  EXPECT_EQ(kResultNobody, Set("name", "3"));
  EXPECT_EQ("3", Get("name"));
  EXPECT_FALSE(isAsked);
}

TEST_F(StoreBindings, DoNotConsultWhatIsStored) {
  Set("name", "stored");
  ConfigData value("before");
  EXPECT_EQ(kResultNobody, m_store.GetDynamicConfig(kAudio, "name", value, "default"));
  EXPECT_STREQ("before", value.ToCstr());
  Bind("name", Returning("bound"));
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, "default"));
  EXPECT_STREQ("bound", value.ToCstr());
  EXPECT_EQ("stored", Get("name"));
}

TEST_F(StoreBindings, LeaveTheOutputAloneWhenThereIsNone) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  ConfigData value("before");
  EXPECT_EQ(kResultNobody, m_store.GetDynamicConfig(kAudio, "name", value, "default"));
  EXPECT_EQ(kResultNobody, m_store.GetDynamicConfig(kVideo, "other", value, "default"));
  EXPECT_STREQ("before", value.ToCstr());
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreBindings, AreOnePerGroupAndName) {
  EXPECT_NE(0U, Bind("name", Returning("first")));
  EXPECT_EQ(0U, Bind("name", Returning("second")));
  EXPECT_NE(0U, Bind("name2", Returning("other name")));
  EXPECT_NE(0U, m_store.BindConfig(kVideo, "name", Returning("other group")));
  ConfigData value;
  m_store.GetDynamicConfig(kAudio, "name", value, {});
  EXPECT_STREQ("first", value.ToCstr());
}

TEST_F(StoreBindings, MayShareANameWithSubscriptions) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  EXPECT_NE(0U, Bind("name", Returning("bound")));
  EXPECT_NE(0U, Subscribe("name", notified.Callback()));
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(2U, notified.Count());
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("bound", value.ToCstr());
  EXPECT_EQ(2U, notified.Count());
}

TEST_F(StoreBindings, MayBeMadeAgainAfterTheirRemoval) {
  const SubscribeId_t id = Bind("name", Returning("first"));
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  ConfigData value("before");
  EXPECT_EQ(kResultNobody, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("before", value.ToCstr());
  EXPECT_NE(0U, Bind("name", Returning("second")));
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("second", value.ToCstr());
}

TEST_F(StoreBindings, AreRefusedWithALineForBadArguments) {
  const std::string bad = "kalStore::KalConfig::bindConfigError parameters";
  TraceLog log(0);
  EXPECT_EQ(0U, Bind(nullptr, Returning("1")));
  EXPECT_EQ(0U, Bind("name", nullptr));
  EXPECT_EQ(0U, Bind("", nullptr));
  EXPECT_EQ(0U, Bind("", Returning("1")));
  EXPECT_THAT(log.Matching(""), ElementsAre(bad + " 0" + Suffix(), bad + " 0" + Suffix(),
                                            bad + " 0" + Suffix(), bad + Suffix()));
  for (const KalConfigGroup group : NoGroups()) {
    log.Clear();
    EXPECT_EQ(0U, m_store.BindConfig(group, "name", Returning("1")));
    EXPECT_THAT(log.Matching(""), ElementsAre(bad + " 0" + Suffix()));
  }
}

TEST_F(StoreBindings, MayUseTheStoreWhileTheyCompute) {
  Bind("inner", Returning("7"));
  Bind("name", [this](const KalConfigEvent&) {
    Set("seen", "1");
    ConfigData inner;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "inner", inner, {}));
    return inner;
  });
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("7", value.ToCstr());
  EXPECT_EQ("1", Get("seen"));
}

TEST_F(StoreBindings, MayGiveAnEmptyValue) {
  Bind("name", [](const KalConfigEvent&) { return ConfigValue(); });
  ConfigData value("before");
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, "default"));
  EXPECT_FALSE(value.IsValid());
}

}  // namespace
}  // namespace kalStore
