// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "store/StoreFixture.h"
#include "support/AllocationCount.h"
#include "support/CallingSink.h"
#include "tessel/json.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

class StoreDocument : public StoreTest {
 protected:
  std::string Dump(ConfigMultGroup_t groups = kAllConfigGroups) { return m_store.DumpKalConfigs(groups); }
};

TEST_F(StoreDocument, AppliesEveryEntry) {
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":""}],
      "Video":[{"value":"2","key":"a"}],"UnitTest":[{"key":"u","value":"3","comment":4}]})"));
  EXPECT_EQ("1", Get("a"));
  EXPECT_EQ("", Get("b"));
  EXPECT_EQ("2", Get(kVideo, "a"));
  EXPECT_EQ("3", Get(KAL_CONFIG_GROUP_UNIT_TEST, "u"));
}

TEST_F(StoreDocument, MayBeEmpty) {
  Set("a", "1");
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs("{}"));
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[]})"));
  EXPECT_EQ("1", Get("a"));
}

TEST_F(StoreDocument, IsRefusedWithoutALineWhenNull) {
  TraceLog log;
  EXPECT_EQ(kResultNotFound, m_store.ApplyKalConfigs(nullptr));
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreDocument, IsRefusedAndStoresNothingWhenItIsNoObject) {
  for (const char* text :
       {"", " ", "[]", "null", "1", "\"Audio\"", "[{\"Audio\":[{\"key\":\"a\",\"value\":\"1\"}]}]",
        "{\"Audio\":[{\"key\":\"a\",\"value\":\"1\"}]", "{\"Audio\":[{\"key\":\"a\",\"value\":\"1\"}]}x",
        "{\"Audio\":[{\"key\":\"a\",\"value\":\"1\"}],}"}) {
    EXPECT_EQ(kResultNotFound, m_store.ApplyKalConfigs(text)) << text;
  }
  EXPECT_EQ("(none)", Get("a"));
}

TEST_F(StoreDocument, SkipsGroupsThatAreNone) {
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(
                           R"({"LastGroup":[{"key":"a","value":"1"}],"audio":[{"key":"a","value":"1"}],
      "Undefined_Group":[{"key":"a","value":"1"}],"":[{"key":"a","value":"1"}],"Audio ":[{"key":"a","value":"1"}],
      "Video":[{"key":"a","value":"2"}]})"));
  EXPECT_EQ("2", Get(kVideo, "a"));
  EXPECT_EQ(R"({"Video":[{"key":"a","value":"2"}]})", Dump(1U << kVideo));
  for (int group = 0; group < 13; ++group) {
    if (group != kVideo) {
      EXPECT_EQ("(none)", Get(Group(group), "a")) << group;
    }
  }
}

TEST_F(StoreDocument, SkipsMembersThatAreNoArray) {
  EXPECT_EQ(kResultOk,
            m_store.ApplyKalConfigs(R"({"Common":null,"Feature":{"key":"a","value":"1"},"Metrics":"a",
      "Audio":1,"Video":[{"key":"a","value":"2"}]})"));
  EXPECT_EQ("2", Get(kVideo, "a"));
  EXPECT_EQ("(none)", Get(KAL_CONFIG_GROUP_FEATURE, "a"));
}

TEST_F(StoreDocument, SkipsEntriesWithoutAStringKeyAndValueAndSetsTheRest) {
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[null,1,"a",[],{},{"key":"a"},{"value":"1"},
      {"key":"a","value":1},{"key":"a","value":true},{"key":"a","value":null},{"key":"a","value":["1"]},
      {"key":1,"value":"1"},{"key":null,"value":"1"},{"Key":"a","Value":"1"},{"key":"","value":"1"},
      {"key":"last","value":"9"}]})"));
  EXPECT_EQ(R"({"Audio":[{"key":"last","value":"9"}]})", Dump(1U << kAudio));
}

TEST_F(StoreDocument, NotifiesSubscribersOfChangesOnly) {
  Set("a", "1");
  Set("b", "1");
  Recorder notified;
  Subscribe("a", notified.Callback());
  Subscribe("b", notified.Callback());
  EXPECT_EQ(kResultOk,
            m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"2"}]})"));
  EXPECT_THAT(notified.Values(), ElementsAre("1", "1", "2"));
  EXPECT_EQ("b", notified.At(2).event.m_name);
  EXPECT_STREQ("1", notified.At(2).event.m_oldValue.ToCstr());
}

TEST_F(StoreDocument, AppliesGroupsByNameAndEntriesInTheirOrder) {
  Recorder notified;
  for (const KalConfigGroup group : {kAudio, kVideo, KAL_CONFIG_GROUP_COMMON}) {
    for (const char* name : {"a", "b"})
      m_store.SubscribeConfig(group, name, notified.Callback(), nullptr, false);
  }
  m_store.ApplyKalConfigs(R"({"Video":[{"key":"b","value":"v1"},{"key":"a","value":"v2"}],
      "Common":[{"key":"a","value":"c"}],"Audio":[{"key":"a","value":"a1"},{"key":"a","value":"a2"}]})");
  EXPECT_THAT(notified.Values(), ElementsAre("a1", "a2", "c", "v1", "v2"));
}

// What is skipped is read all the same: a fault in it refuses the document.
TEST_F(StoreDocument, IsRefusedWholeForAFaultInWhatWouldBeSkipped) {
  Recorder notified;
  Subscribe("a", notified.Callback());
  const std::string deep(998, '[');
  for (const std::string& skipped :
       {std::string(R"("\x")"), std::string(R"("\u00g0")"), std::string("1."), std::string("01"),
        std::string("-"), std::string("1e"), std::string("nul"), std::string("[1,]"),
        std::string(R"({"x":})"), "[" + deep + "[1]" + std::string(999, ']')}) {
    for (const std::string& text : {R"({"Audio":[{"key":"a","value":"1"}],"Nowhere":)" + skipped + "}",
                                    R"({"Audio":[{"key":"a","value":"1"},)" + skipped + "]}",
                                    R"({"Audio":[{"key":"a","value":"1","note":)" + skipped + "}]}"}) {
      EXPECT_EQ(kResultNotFound, m_store.ApplyKalConfigs(text.c_str())) << text;
    }
  }
  EXPECT_EQ("(none)", Get("a"));
  EXPECT_EQ(0U, notified.Count());
}

TEST_F(StoreDocument, SkipsNestingUpToTheDeepestLevel) {
  const std::string text = R"({"Audio":[{"key":"a","value":"1"}],"Nowhere":)" + std::string(999, '[') +
                           std::string(999, ']') + "}";
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text.c_str()));
  EXPECT_EQ("1", Get("a"));
}

TEST_F(StoreDocument, ReadsTheLastOfEqualGroupsAloneWhateverItIs) {
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"1"}],
      "Video":[{"key":"a","value":"1"}],"Metrics":[{"key":"a","value":"1"}],"Common":7,
      "Aud\u0069o":[{"key":"b","value":"2"}],"Video":null,"Metrics":{"key":"a","value":"2"},
      "Common":[{"key":"a","value":"2"}]})"));
  EXPECT_EQ(
      R"({"Audio":[{"key":"b","value":"2"}],"Common":[{"key":"a","value":"2"}],"Metrics":[],"Video":[]})",
      Dump(1U << kAudio | 1U << kVideo | 1U << KAL_CONFIG_GROUP_COMMON | 1U << KAL_CONFIG_GROUP_METRICS));
}

TEST_F(StoreDocument, ReadsTheLastOfEqualMembersAloneWithItsKind) {
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1","value":2},
      {"key":"b","value":"1","k\u0065y":7},{"key":7,"value":[],"key":"c","value":"3"},
      {"key":"d","value":"4","note":{"key":"e","value":"5"}},{"key":"f","note":{"value":"6"}},
      {"\u006bey":"g","valu\u0065":"7"}]})"));
  EXPECT_EQ(R"({"Audio":[{"key":"c","value":"3"},{"key":"d","value":"4"},{"key":"g","value":"7"}]})",
            Dump(1U << kAudio));
}

TEST_F(StoreDocument, CutsAKeyAtItsFirstZeroByteAndTakesAValueWhole) {
  using namespace std::string_literals;
  EXPECT_EQ(kResultOk,
            m_store.ApplyKalConfigs(
                R"({"Audio":[{"key":"a\u0000x\u0000y","value":"1\u00002"},{"key":"\u0000b","value":"3"}]})"));
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetKalConfig(kAudio, "a", value));
  EXPECT_EQ("1\0"s + "2", value.ToString());
  EXPECT_EQ(1U, json::Deserialize(Dump())["Audio"].size());
}

namespace {

// Counts the sets, and what is allocated from the first one on.
struct WatchingStore : KalConfig {
  using KalConfig::KalConfig;
  std::int32_t SetKalConfig(KalConfigGroup, const char*, ConfigData, bool, bool) override {
    if (sets++ == 0) fromTheFirstSet.emplace();
    return kResultOk;
  }
  int sets = 0;
  std::optional<AllocationCount> fromTheFirstSet;
};

}  // namespace

TEST_F(StoreDocument, IsReadWholeBeforeTheFirstSet) {
  WatchingStore store(5);
  EXPECT_EQ(kResultOk, store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"1"}],
      "Video":[{"key":"c","value":"1"}]})"));
  EXPECT_EQ(0U, store.fromTheFirstSet->Count());
  EXPECT_EQ(3, store.sets);
}

TEST_F(StoreDocument, SetsNothingWhenMemoryRunsOutWhileItIsRead) {
  const std::string text = R"({"Video":[{"key":"a\n","value":"a value with memory of its own\n"}],
      "Audio":[{"key":"a","value":"1"},{"key":"b","value":"2"}]})";
  const long before = LiveAllocations();
  for (std::size_t n = 1;; ++n) {
    WatchingStore store(5);
    FailAllocation nth(n);
    try {
      store.ApplyKalConfigs(text.c_str());
    } catch (const std::bad_alloc&) {
      // The long value's own memory fails between the sets.
      EXPECT_TRUE(store.sets == 0 || store.sets == 2) << n;
    }
    if (!nth.Fired()) break;
  }
  EXPECT_EQ(before, LiveAllocations());
}

TEST_F(StoreDocument, MayLoseItsTextInTheFirstCallback) {
  const std::string text = R"({"Audio":[{"key":"a","value":"1"}],"Video":[{"key":"b","value":"2"}]})";
  auto copy = std::make_unique<std::string>(text);
  Subscribe("a", [&](const KalConfigEvent&) { copy.reset(); });
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(copy->c_str()));
  EXPECT_EQ(nullptr, copy);
  EXPECT_EQ("2", Get(kVideo, "b"));
}

TEST_F(StoreDocument, MayBeTheDumpThatACallbackReplaces) {
  Set("a", "1");
  m_store.SetKalConfig(kVideo, "b", "2", false, false);
  const char* const text = m_store.DumpKalConfigs(kAllConfigGroups);
  m_store.RemoveKalConfigByGroup(kAudio);
  m_store.RemoveKalConfigByGroup(kVideo);
  Subscribe("a", [this](const KalConfigEvent&) { m_store.DumpKalConfigs(0); });
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text));
  EXPECT_EQ("2", Get(kVideo, "b"));
}

TEST_F(StoreDocument, MayBeTheDumpThatATraceSinkReplaces) {
  Set("a", std::string(100, 'x'));
  const char* const text = m_store.DumpKalConfigs(kAllConfigGroups);
  m_store.RemoveKalConfigByGroup(kAudio);
  const CallingSink sink("", [this] { m_store.DumpKalConfigs(0); });
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text));
  EXPECT_EQ(std::string(100, 'x'), Get("a"));
}

TEST_F(StoreDocument, EndsWithWhatACallbackThrowsAndKeepsWhatWasSetBefore) {
  Subscribe("b", [](const KalConfigEvent&) { throw std::runtime_error("no"); });
  EXPECT_THROW(m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"1"},
      {"key":"c","value":"1"}],"Video":[{"key":"a","value":"1"}]})"),
               std::runtime_error);
  EXPECT_EQ("1", Get("a"));
  EXPECT_EQ("1", Get("b"));
  EXPECT_EQ("(none)", Get("c"));
  EXPECT_EQ("(none)", Get(kVideo, "a"));
}

TEST_F(StoreDocument, HoldsNoLockWhileACallbackRuns) {
  Subscribe("a", [this](const KalConfigEvent&) {
    std::thread([this] {
      Set("b", "other");
      m_store.ApplyKalConfigs(R"({"Audio":[{"key":"c","value":"other"}]})");
      m_store.DumpKalConfigs(kAllConfigGroups);
    }).join();
  });
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"}]})"));
  EXPECT_EQ("other", Get("b"));
  EXPECT_EQ("other", Get("c"));
}

TEST_F(StoreDocument, MayBeAppliedAndDumpedFromACallback) {
  Subscribe("a", [this](const KalConfigEvent&) {
    m_store.ApplyKalConfigs(R"({"Video":[{"key":"a","value":"inner"}]})");
    m_store.DumpKalConfigs(kAllConfigGroups);
  });
  m_store.ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"}]})");
  EXPECT_EQ("inner", Get(kVideo, "a"));
}

TEST_F(StoreDocument, GoesThroughTheVirtualSet) {
  struct Counting : KalConfig {
    using KalConfig::KalConfig;
    std::int32_t SetKalConfig(KalConfigGroup group, const char* name, ConfigData value, bool force,
                              bool transient) override {
      EXPECT_FALSE(force);
      EXPECT_FALSE(transient);
      ++sets;
      return KalConfig::SetKalConfig(group, name, std::move(value), force, transient);
    }
    int sets = 0;
  } store(5);
  store.ApplyKalConfigs(
      R"({"Audio":[{"key":"a","value":"1"},{"key":"","value":"1"}],"None":[{"key":"a","value":"1"}]})");
  EXPECT_EQ(2, store.sets);
}

TEST_F(StoreDocument, TracesTheTextThatIsApplied) {
  TraceLog log;
  m_store.ApplyKalConfigs("[]");
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::KalConfig::ApplyKalConfigs [cid=5]szJsonConfig=[]" +
                                            ThisText(&m_store)));
  EXPECT_EQ(1U, log.CountLevel(2));
  log.Clear();
  const std::string text = "{\"Audio\":[{\"key\":\"a\",\"value\":\"" + std::string(3000, 'x') + "\"}]}";
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text.c_str()));
  EXPECT_EQ(1023U, log.Lines().at(0).text.size());
  EXPECT_EQ(3000U, Get("a").size());
}

TEST_F(StoreDocument, DumpsTheGroupsAskedForEvenWhenTheyAreEmpty) {
  EXPECT_EQ(R"({"Common":[],"Metrics":[]})", Dump(0b101));
  EXPECT_EQ("{}", Dump(0));
  EXPECT_EQ("{}", Dump(0xFFFFE000U));
  EXPECT_EQ(R"({"UnitTest":[]})", Dump(1U << 12 | 1U << 13 | 1U << 31));
}

TEST_F(StoreDocument, DumpsAllThirteenGroups) {
  json::Value document = json::Deserialize(Dump(0xFFFFFFFFU));
  ASSERT_EQ(json::ObjectVal, document.GetType());
  EXPECT_EQ(13U, document.ToObject().size());
  for (int group = 0; group < 13; ++group) {
    EXPECT_EQ(json::ArrayVal, document[KalConfigGroup2GroupName(Group(group))].GetType());
  }
}

TEST_F(StoreDocument, DumpsNamesInByteOrderAndValuesAsStrings) {
  Set("b", 2);
  Set("a", 1.5);
  Set("B", true);
  Set("\xff", "");
  EXPECT_EQ(
      "{\"Audio\":[{\"key\":\"B\",\"value\":\"1\"},{\"key\":\"a\",\"value\":\"1.5\"},"
      "{\"key\":\"b\",\"value\":\"2\"},{\"key\":\"\xff\",\"value\":\"\"}]}",
      Dump(1U << kAudio));
}

TEST_F(StoreDocument, EscapesWhatItDumps) {
  Set("q\"\\", "line\nend");
  EXPECT_EQ(R"({"Audio":[{"key":"q\"\\","value":"line\nend"}]})", Dump(1U << kAudio));
}

TEST_F(StoreDocument, TracesTheGroupsDumped) {
  TraceLog log;
  Dump(5);
  Dump(0xFFFFFFFFU);
  EXPECT_THAT(log.Matching(""),
              ElementsAre("kalStore::KalConfig::DumpKalConfigs, groups=5" + Suffix(),
                          "kalStore::KalConfig::DumpKalConfigs, groups=4294967295" + Suffix()));
  EXPECT_EQ(2U, log.CountLevel(2));
}

// Application comes before Common in the text, and after it among the groups. A writer sets both while the
// dump copies a group that lies between them in either order.
TEST_F(StoreDocument, NeverShowsTheLaterOfTwoSetsAloneWhenTheEarlierWentToALaterGroup) {
  constexpr std::size_t kLong = 1'000'000;
  Set("long", std::string(kLong, 'x'));
  const auto setBoth = [this](const char* value) {
    m_store.SetKalConfig(KAL_CONFIG_GROUP_APPLICATION, "name", value, false, false);
    m_store.SetKalConfig(KAL_CONFIG_GROUP_COMMON, "name", value, false, false);
  };
  setBoth("old");
  AtAllocation copiesTheLongValue(kLong, [&] { setBoth("new"); });
  const json::Value dump = json::Deserialize(Dump());
  EXPECT_TRUE(copiesTheLongValue.Fired());
  EXPECT_EQ("old", dump["Common"][0]["value"].ToString());
  EXPECT_EQ("new", dump["Application"][0]["value"].ToString());
}

TEST_F(StoreDocument, EndsAValueAtItsFirstZeroByteWhenDumped) {
  using namespace std::string_literals;
  Set("whole", "ab"s);
  Set("zero", "a\0b"s);
  const std::string text = Dump(1U << kAudio);
  EXPECT_EQ(R"({"Audio":[{"key":"whole","value":"ab"},{"key":"zero","value":"a"}]})", text);

  Recorder notified;
  Subscribe("whole", notified.Callback());
  Subscribe("zero", notified.Callback());
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text.c_str()));
  EXPECT_THAT(notified.Values(), ElementsAre("ab", "a", "a"));
  EXPECT_EQ("a"s, notified.At(2).event.m_newValue.ToString());
}

TEST_F(StoreDocument, KeepsTheTextInTheStoreUntilTheNextDump) {
  Set("a", std::string(100, 'x'));
  const char* text = m_store.DumpKalConfigs(1U << kAudio);
  const std::string copy = text;
  Set("a", "other");
  m_store.RemoveKalConfigByGroup(kAudio);
  EXPECT_EQ(copy, text);
}

TEST_F(StoreDocument, RestoresTheSameValuesAndThenChangesNothing) {
  for (int group = 0; group < 13; ++group) {
    m_store.SetKalConfig(Group(group), "name", group, false, false);
    m_store.SetKalConfig(Group(group), "odd \"\\\n\x01\x7f\xc3\xa4 key", "odd \"\\\t\x02\xff value", false,
                         false);
  }
  const std::string text = Dump();
  KalConfig other(6);
  EXPECT_EQ(kResultOk, other.ApplyKalConfigs(text.c_str()));
  EXPECT_EQ(text, other.DumpKalConfigs(kAllConfigGroups));

  Recorder notified;
  m_store.SubscribeConfig(kAudio, "name", notified.Callback(), nullptr, false);
  EXPECT_EQ(kResultOk, m_store.ApplyKalConfigs(text.c_str()));
  EXPECT_EQ(1U, notified.Count());
}

TEST_F(StoreDocument, SurvivesEveryTruncationAndByteChange) {
  const std::string text = R"({"Audio":[{"key":"aA","value":"1\n"}],"Video":[{"key":"b","value":"2"}]})";
  for (std::size_t length = 0; length < text.size(); ++length) {
    KalConfig store(5);
    EXPECT_EQ(kResultNotFound, store.ApplyKalConfigs(text.substr(0, length).c_str()));
    EXPECT_EQ(std::string("{\"Audio\":[],\"Video\":[]}"), store.DumpKalConfigs(1U << kAudio | 1U << kVideo));
  }
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (int byte = 0; byte < 256; byte += 1) {
      std::string changed = text;
      changed[at] = static_cast<char>(byte);
      KalConfig store(5);
      const std::int32_t result = store.ApplyKalConfigs(changed.c_str());
      const std::string dump = store.DumpKalConfigs(1U << kAudio | 1U << kVideo);
      if (result != kResultOk) {
        EXPECT_EQ("{\"Audio\":[],\"Video\":[]}", dump);
      }
      EXPECT_EQ(json::ObjectVal, json::Deserialize(dump).GetType());
    }
  }
}

TEST_F(StoreDocument, MayBeDumpedBySeveralThreadsAtOnce) {
  for (int i = 0; i < 50; ++i) Set(std::to_string(i).c_str(), i);
  const auto dump = [this] {
    for (int i = 0; i < 50; ++i) EXPECT_NE(nullptr, m_store.DumpKalConfigs(kAllConfigGroups));
  };
  std::thread first(dump);
  std::thread second(dump);
  for (int i = 0; i < 200; ++i) Set("name", i);
  first.join();
  second.join();
  EXPECT_EQ(51U, json::Deserialize(Dump())["Audio"].ToArray().size());
}

}  // namespace
}  // namespace kalStore
