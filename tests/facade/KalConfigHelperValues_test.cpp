// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <vector>

#include "FacadeTest.h"

namespace kalStore {
namespace {

using KalConfigHelperValuesTest = FacadeTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;

constexpr std::int64_t kEmpty = -2;  // The value-returning reads: an empty value.

std::int64_t Outcome(const ConfigData& value) {
  return value.IsValid() ? 0 : kEmpty;
}
std::int64_t Outcome(const char* text) {
  return text == nullptr ? kResultBadArgument : 0;
}

ConfigData AnyValue(const KalConfigEvent&) {
  return ConfigData("any");
}
void Ignore(const KalConfigEvent&) {}

// One call of an operation with arguments that fail a check, and all that may be observed of the failure.
struct FailingCall {
  const char* what;
  std::function<std::int64_t(KalConfigHelper&)> call;
  std::int64_t expected;
  const char* trace;  // The assertion's condition, or the line's label and text.
};

const char kNameAndStore[] = "(szConfigName != NULL) && (m_pIKalConfig != NULL)";
const char kStore[] = "(m_pIKalConfig != NULL)";
const char kTextAndStore[] = "(szJsonConfig != NULL) && (m_pIKalConfig != NULL)";
const char kHelperAndName[] = "(m_pObserverHelper != NULL) && (szConfigName != NULL)";

// On a facade without a store, with good arguments.
const FailingCall kWithoutStore[] = {
    {"Set", [](KalConfigHelper& f) { return f.SetKalConfig("a", 1, kGroup, true, false); },
     kResultBadArgument, kNameAndStore},
    {"Set by session", [](KalConfigHelper& f) { return f.SetKalConfig(Session(0), "a", 1, true, false); },
     kResultBadArgument, kNameAndStore},
    {"Get",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig("a", v, kGroup);
     },
     kResultBadArgument, kNameAndStore},
    {"Get by value", [](KalConfigHelper& f) { return Outcome(f.GetKalConfig("a", kGroup)); }, kEmpty,
     kNameAndStore},
    {"Get by session",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig(Session(0), "a", v);
     },
     kResultBadArgument, kNameAndStore},
    {"Get by session and value", [](KalConfigHelper& f) { return Outcome(f.GetKalConfig(Session(0), "a")); },
     kEmpty, kNameAndStore},
    {"Have", [](KalConfigHelper& f) { return f.HaveKalConfig("a", kGroup); }, false, kNameAndStore},
    {"GetDynamic",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetDynamicConfig("a", v, kGroup, 1);
     },
     kResultBadArgument, kNameAndStore},
    {"GetDynamic by value", [](KalConfigHelper& f) { return Outcome(f.GetDynamicConfig("a", kGroup, 1)); },
     kEmpty, kNameAndStore},
    {"Remove", [](KalConfigHelper& f) { return f.RemoveKalConfig("a", kGroup); }, kResultBadArgument,
     kNameAndStore},
    {"RemoveByGroup", [](KalConfigHelper& f) { return f.RemoveKalConfigByGroup(kGroup); }, kResultBadArgument,
     kStore},
    {"Dump", [](KalConfigHelper& f) { return Outcome(f.DumpKalConfigs(1)); }, kResultBadArgument, kStore},
    {"Apply", [](KalConfigHelper& f) { return f.ApplyKalConfigs("{}"); }, kResultBadArgument, kTextAndStore},
};

// On any facade, with a null name or string.
const FailingCall kNullName[] = {
    {"Set", [](KalConfigHelper& f) { return f.SetKalConfig(nullptr, 1, kGroup); }, kResultBadArgument,
     kNameAndStore},
    {"Set by session", [](KalConfigHelper& f) { return f.SetKalConfig(Session(0), nullptr, 1); },
     kResultBadArgument, kNameAndStore},
    {"Get",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig(nullptr, v, kGroup);
     },
     kResultBadArgument, kNameAndStore},
    {"Get by value", [](KalConfigHelper& f) { return Outcome(f.GetKalConfig(nullptr, kGroup)); }, kEmpty,
     kNameAndStore},
    {"Get by session",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig(Session(0), nullptr, v);
     },
     kResultBadArgument, kNameAndStore},
    {"Have", [](KalConfigHelper& f) { return f.HaveKalConfig(nullptr, kGroup); }, false, kNameAndStore},
    {"GetDynamic",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetDynamicConfig(nullptr, v, kGroup);
     },
     kResultBadArgument, kNameAndStore},
    {"GetDynamic by value", [](KalConfigHelper& f) { return Outcome(f.GetDynamicConfig(nullptr, kGroup)); },
     kEmpty, kNameAndStore},
    {"Remove", [](KalConfigHelper& f) { return f.RemoveKalConfig(nullptr, kGroup); }, kResultBadArgument,
     kNameAndStore},
    {"Apply", [](KalConfigHelper& f) { return f.ApplyKalConfigs(nullptr); }, kResultBadArgument,
     kTextAndStore},
    {"Subscribe",
     [](KalConfigHelper& f) {
       return static_cast<std::int64_t>(f.SubscribeConfig(nullptr, &Ignore, kGroup));
     },
     0, kHelperAndName},
    {"Bind",
     [](KalConfigHelper& f) { return static_cast<std::int64_t>(f.BindConfig(nullptr, &AnyValue, kGroup)); },
     0, kHelperAndName},
    // The name is checked before the group is resolved.
    {"Set without group", [](KalConfigHelper& f) { return f.SetKalConfig(nullptr, 1); }, kResultBadArgument,
     kNameAndStore},
    {"Subscribe without group",
     [](KalConfigHelper& f) { return static_cast<std::int64_t>(f.SubscribeConfig(nullptr, &Ignore)); }, 0,
     kHelperAndName},
};

// On a bound facade without a default group.
const FailingCall kUnresolvedGroup[] = {
    {"Set", [](KalConfigHelper& f) { return f.SetKalConfig("a", 1); }, kResultNotFound,
     "SetKalConfigError KalConfigGroup"},
    {"Set by session", [](KalConfigHelper& f) { return f.SetKalConfig(Session(6), "a", 1); }, kResultNotFound,
     "SetKalConfigError KalConfigGroup"},
    {"Get",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig("a", v, Group(0xFFFFFFFF));
     },
     kResultNotFound, "GetKalConfigError KalConfigGroup"},
    {"Get by value", [](KalConfigHelper& f) { return Outcome(f.GetKalConfig("a")); }, kEmpty,
     "GetKalConfigError KalConfigGroup"},
    {"Get by session",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetKalConfig(Session(15), "a", v);
     },
     kResultNotFound, "GetKalConfigError KalConfigGroup"},
    {"Get by session and value", [](KalConfigHelper& f) { return Outcome(f.GetKalConfig(Session(99), "a")); },
     kEmpty, "GetKalConfigError KalConfigGroup"},
    {"Have", [](KalConfigHelper& f) { return f.HaveKalConfig("a"); }, false,
     "GetKalConfigError KalConfigGroup"},
    {"GetDynamic",
     [](KalConfigHelper& f) {
       ConfigData v;
       return f.GetDynamicConfig("a", v);
     },
     kResultNotFound, "GetDynamicConfigError KalConfigGroup"},
    {"GetDynamic by value", [](KalConfigHelper& f) { return Outcome(f.GetDynamicConfig("a")); }, kEmpty,
     "GetDynamicConfigError KalConfigGroup"},
    {"Remove", [](KalConfigHelper& f) { return f.RemoveKalConfig("a"); }, kResultNotFound,
     "RemoveKalConfigError KalConfigGroup"},
    {"RemoveByGroup", [](KalConfigHelper& f) { return f.RemoveKalConfigByGroup(); }, kResultNotFound,
     "RemoveKalConfigByGroupError KalConfigGroup"},
    {"Subscribe",
     [](KalConfigHelper& f) { return static_cast<std::int64_t>(f.SubscribeConfig("a", &Ignore)); }, 0,
     "SubscribeConfig Error KalConfigGroup"},
    {"Bind", [](KalConfigHelper& f) { return static_cast<std::int64_t>(f.BindConfig("a", &AnyValue)); }, 0,
     "BindConfig Error KalConfigGroup"},
    {"Unsubscribe", [](KalConfigHelper& f) { return f.UnsubscribeConfig("a", KAL_CONFIG_GROUP_DEFAULT); },
     kResultNotFound, "UnsubscribeConfigError KalConfigGroup"},
};

void ExpectAssertion(const FailingCall& row, KalConfigHelper& facade) {
  SCOPED_TRACE(row.what);
  const unsigned long reports = cm_assertion_report_count();
  const TraceLog log;
  EXPECT_EQ(row.call(facade), row.expected);
  EXPECT_EQ(cm_assertion_report_count(), reports + 1);
  ASSERT_EQ(log.Lines().size(), 1U);
  EXPECT_EQ(log.Lines()[0].level, 0);
  const std::string text = log.Lines()[0].text;
  const std::string begin = "[KAL_ASSERT] KalConfig:";
  ASSERT_EQ(text.substr(0, begin.size()), begin);
  const std::size_t digits = text.find_first_not_of("0123456789", begin.size());
  EXPECT_GT(digits, begin.size());
  EXPECT_EQ(text.substr(digits), std::string(" Assert failed: ") + row.trace);
}

TEST_F(KalConfigHelperValuesTest, ReportsEachOperationWithoutAStore) {
  KalConfigHelper facade;
  for (const FailingCall& row : kWithoutStore) ExpectAssertion(row, facade);
}

TEST_F(KalConfigHelperValuesTest, ReportsEachNullName) {
  KalConfigHelper bound(kCall);
  for (const FailingCall& row : kNullName) ExpectAssertion(row, bound);
  KalConfigHelper unbound;
  for (const FailingCall& row : kNullName) ExpectAssertion(row, unbound);
  EXPECT_STREQ(bound.DumpKalConfigs(1U << kGroup), "{\"Audio\":[]}");
}

TEST_F(KalConfigHelperValuesTest, ReportsWithoutALineUnderANegativeMask) {
  KalConfigHelper facade;
  const unsigned long reports = cm_assertion_report_count();
  const TraceLog log(-1);
  EXPECT_EQ(facade.RemoveKalConfigByGroup(kGroup), kResultBadArgument);
  EXPECT_EQ(cm_assertion_report_count(), reports + 1);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(KalConfigHelperValuesTest, TracesEachUnresolvedGroup) {
  KalConfigHelper facade(kCall);
  for (const FailingCall& row : kUnresolvedGroup) {
    SCOPED_TRACE(row.what);
    const unsigned long reports = cm_assertion_report_count();
    const TraceLog log;
    EXPECT_EQ(row.call(facade), row.expected);
    EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::KalConfigHelper::" + std::string(row.trace) +
                                              CallSuffix(kCall, &facade)));
    EXPECT_EQ(log.CountLevel(0), 1U);
    EXPECT_EQ(cm_assertion_report_count(), reports);
  }
}

TEST_F(KalConfigHelperValuesTest, ChecksTheStoreBeforeTheGroup) {
  KalConfigHelper facade;
  ConfigData value;
  EXPECT_EQ(facade.GetKalConfig("a", value), kResultBadArgument);
  EXPECT_EQ(facade.RemoveKalConfigByGroup(), kResultBadArgument);
}

TEST_F(KalConfigHelperValuesTest, LeavesGroupsAbove12ToTheStore) {
  KalConfigHelper facade(kCall);
  ConfigData value("kept");
  for (const std::uint32_t group : {13U, 14U, 0xFFFFFFFEU}) {
    EXPECT_EQ(facade.SetKalConfig("a", 1, Group(group)), kResultBadArgument);
    EXPECT_EQ(facade.GetKalConfig("a", value, Group(group)), kResultBadArgument);
    EXPECT_FALSE(facade.GetKalConfig("a", Group(group)).IsValid());
    EXPECT_EQ(facade.GetDynamicConfig("a", value, Group(group)), kResultBadArgument);
    EXPECT_EQ(facade.RemoveKalConfig("a", Group(group)), kResultBadArgument);
    EXPECT_EQ(facade.RemoveKalConfigByGroup(Group(group)), kResultBadArgument);
  }
  EXPECT_EQ(value, ConfigData("kept"));
}

TEST_F(KalConfigHelperValuesTest, PassesResultsAndFlagsOn) {
  KalConfigHelper facade(kCall);
  EXPECT_EQ(facade.SetKalConfig("", 1, kGroup), kResultBadArgument);
  EXPECT_EQ(facade.SetKalConfig("a", ConfigData(), kGroup), kResultBadArgument);
  EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup), kResultUnchanged);
  EXPECT_EQ(facade.SetKalConfig("a", 1, kGroup, true), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("a", 2, kGroup, false, true), kResultNobody);
  EXPECT_FALSE(facade.HaveKalConfig("a", kGroup)) << "a transient value is not stored";
  EXPECT_EQ(facade.SetKalConfig(Session(0), "a", 1), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig(Session(0), "a", 1, true), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig(Session(0), "a", 1, false, true), kResultUnchanged);
  EXPECT_FALSE(facade.HaveKalConfig("a", kGroup));
}

TEST_F(KalConfigHelperValuesTest, ReadsBackWhatItWrote) {
  KalConfigHelper facade(kCall);
  facade.SetKalConfig("a", "x", kGroup);
  ConfigData value;
  EXPECT_EQ(facade.GetKalConfig("a", value, kGroup), kResultOk);
  EXPECT_EQ(value, ConfigData("x"));
  EXPECT_EQ(facade.GetKalConfig("a", kGroup), ConfigData("x"));
  EXPECT_EQ(facade.GetKalConfig(kal::KAL_SESSION_AUDIO, "a", value), kResultOk);
  EXPECT_EQ(facade.GetKalConfig(kal::KAL_SESSION_AUDIO, "a"), ConfigData("x"));
  EXPECT_TRUE(facade.HaveKalConfig("a", kGroup));
}

TEST_F(KalConfigHelperValuesTest, HasNoMissingValue) {
  KalConfigHelper facade(kCall);
  ConfigData value("old");
  EXPECT_FALSE(facade.HaveKalConfig("a", kGroup));
  EXPECT_EQ(facade.GetKalConfig("a", value, kGroup), kResultNotFound);
  EXPECT_FALSE(value.IsValid());
  EXPECT_FALSE(facade.GetKalConfig("a", kGroup).IsValid());
}

TEST_F(KalConfigHelperValuesTest, UsesTheDefaultGroup) {
  KalConfigHelper facade(kCall);
  ASSERT_EQ(facade.SetDefaultGroup(KAL_CONFIG_GROUP_METRICS), kResultOk);
  facade.SetKalConfig("a", 1);
  EXPECT_EQ(facade.GetKalConfig("a", KAL_CONFIG_GROUP_METRICS), ConfigData(1));
  EXPECT_EQ(facade.RemoveKalConfig("a"), kResultOk);
  EXPECT_FALSE(facade.HaveKalConfig("a"));
  // A session type without a group falls to the default group too; one with a group does not.
  facade.SetKalConfig(Session(13), "b", 2);
  EXPECT_EQ(facade.GetKalConfig("b"), ConfigData(2));
  EXPECT_EQ(facade.GetKalConfig(Session(15), "b"), ConfigData(2));
  EXPECT_FALSE(facade.GetKalConfig(Session(0), "b").IsValid());
  EXPECT_EQ(facade.RemoveKalConfigByGroup(), kResultOk);
  EXPECT_FALSE(facade.HaveKalConfig("b"));
}

TEST_F(KalConfigHelperValuesTest, ReadsBoundNames) {
  KalConfigHelper facade(kCall);
  ASSERT_NE(
      facade.BindConfig(
          "a", [](const KalConfigEvent& e) { return ConfigData(e.m_defaultValue.ToInt() + 1); }, kGroup),
      0U);
  ConfigData value;
  EXPECT_EQ(facade.GetDynamicConfig("a", value, kGroup, 41), kResultOk);
  EXPECT_EQ(value, ConfigData(42));
  EXPECT_EQ(facade.GetDynamicConfig("a", kGroup, 1), ConfigData(2));
}

TEST_F(KalConfigHelperValuesTest, ReadsNothingWithoutABindingAlsoWithADefault) {
  KalConfigHelper facade(kCall);
  facade.SetKalConfig("a", 5, kGroup);
  ConfigData value("kept");
  EXPECT_EQ(facade.GetDynamicConfig("a", value, kGroup, 41), kResultNobody);
  EXPECT_EQ(value, ConfigData("kept"));
  EXPECT_FALSE(facade.GetDynamicConfig("a", kGroup, 41).IsValid());
}

TEST_F(KalConfigHelperValuesTest, DumpsAndApplies) {
  KalConfigHelper facade(kCall);
  EXPECT_EQ(facade.ApplyKalConfigs("[]"), kResultNotFound);
  EXPECT_EQ(facade.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"x"}]})"), kResultOk);
  EXPECT_EQ(facade.GetKalConfig("a", kGroup), ConfigData("x"));
  EXPECT_STREQ(facade.DumpKalConfigs(1U << kGroup), R"({"Audio":[{"key":"a","value":"x"}]})");
  EXPECT_STREQ(facade.DumpKalConfigs(0), "{}");
  EXPECT_THAT(KalConfigHelper().DumpKalConfigs(1), IsNull());
}

// What default arguments allow is not ambiguous.
TEST_F(KalConfigHelperValuesTest, TakesTheShortForms) {
  KalConfigHelper facade(kCall);
  ASSERT_EQ(facade.SetDefaultGroup(kGroup), kResultOk);
  ConfigData value;
  EXPECT_EQ(facade.SetKalConfig("a", 0), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("b", "text"), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("c", true), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig("a", 0), kResultUnchanged);
  EXPECT_EQ(facade.SetKalConfig(kal::KAL_SESSION_AUDIO, "b", "text"), kResultUnchanged);
  EXPECT_EQ(facade.GetKalConfig("a", value), kResultOk);
  EXPECT_EQ(facade.GetKalConfig("a"), ConfigData(0));
  EXPECT_EQ(facade.GetKalConfig(kal::KAL_SESSION_AUDIO, "b"), ConfigData("text"));
  EXPECT_EQ(facade.GetDynamicConfig("a", value), kResultNobody);
  EXPECT_FALSE(facade.GetDynamicConfig("a").IsValid());
  EXPECT_EQ(facade.RemoveKalConfig("a"), kResultOk);
  EXPECT_EQ(facade.UnsubscribeConfig(0), kResultNotFound);
  EXPECT_NE(facade.DumpKalConfigs(), nullptr);
}

}  // namespace
}  // namespace kalStore
