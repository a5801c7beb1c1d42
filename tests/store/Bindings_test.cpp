// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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

TEST_F(StoreBindings, MayAskThemselvesEachTimeWithAnEventOfItsOwn) {
  const std::string name(40, 'n');
  std::vector<const KalConfigEvent*> events;
  const auto ask = [&](const char* given) {
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, name.c_str(), value, given));
    return std::string(value.ToCstr());
  };
  Bind(name.c_str(), [&](const KalConfigEvent& event) {
    const std::string given = event.m_defaultValue.ToCstr();
    EXPECT_THAT(events, ::testing::Not(::testing::Contains(&event)));
    events.push_back(&event);
    // Twice in turn: the first inner read has ended when the second begins, and this one has not.
    const std::string inner = given.size() < 3 ? ask((given + "a").c_str()) + ask((given + "b").c_str()) : "";
    events.pop_back();
    EXPECT_EQ(name, event.m_name);
    EXPECT_EQ(given, event.m_defaultValue.ToCstr());
    return ConfigValue(given + inner);
  });
  for (int time = 0; time < 2; ++time) EXPECT_EQ("xxaxaaxabxbxbaxbb", ask("x"));
}

TEST_F(StoreBindings, AskedByTwoThreadsHandEachAnEventOfItsOwn) {
  const std::string name(40, 'n');
  const std::string defaults[] = {std::string(40, '1'), std::string(40, '2'), std::string(40, '3')};
  const auto ask = [&](int reader) {
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, name.c_str(), value, defaults[reader]));
    EXPECT_EQ(defaults[reader], value.ToString());
  };
  int depth = 0;
  Bind(name.c_str(), [&](const KalConfigEvent& event) {
    const std::string given = event.m_defaultValue.ToString();
    if (++depth < 3) {
      // The read in between has ended, this one has not: a third finds only its mark gone.
      if (depth == 1) ask(1);
      std::thread([&] { ask(2); }).join();
    }
    EXPECT_EQ(name, event.m_name);
    EXPECT_EQ(given, event.m_defaultValue.ToString());
    return event.m_defaultValue;
  });
  ask(0);
}

TEST_F(StoreBindings, HandOnNoDefaultOfAnEarlierRead) {
  Bind("name", [](const KalConfigEvent& event) {
    if (event.m_defaultValue.ToString() == "throw") throw std::runtime_error("bound");
    return event.m_defaultValue;
  });
  ConfigData value;
  EXPECT_THROW(m_store.GetDynamicConfig(kAudio, "name", value, "throw"), std::runtime_error);
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_FALSE(value.IsValid());
  m_store.GetDynamicConfig(kAudio, "name", value, std::string(40, 'd'));
  EXPECT_EQ(std::string(40, 'd'), value.ToString());
  m_store.GetDynamicConfig(kAudio, "name", value, {});
  EXPECT_FALSE(value.IsValid());
}

TEST_F(StoreBindings, ThatAreNoneAreReadWithoutAWarning) {
  Subscribe("subscribed", [](const KalConfigEvent&) {});
  m_store.UnsubscribeConfig(Bind("removed", [](const KalConfigEvent&) { return ConfigValue(); }));
  const TraceLog log(1);
  ConfigData value;
  for (const char* name : {"none", "subscribed", "removed"})
    EXPECT_EQ(kResultNobody, m_store.GetDynamicConfig(kAudio, name, value, {}));
  for (const char* name : {"none", "removed"}) EXPECT_EQ(kResultNobody, Set(name, "1"));
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreBindings, MayGiveAnEmptyValue) {
  Bind("name", [](const KalConfigEvent&) { return ConfigValue(); });
  ConfigData value("before");
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, "default"));
  EXPECT_FALSE(value.IsValid());
}

}  // namespace
}  // namespace kalStore
