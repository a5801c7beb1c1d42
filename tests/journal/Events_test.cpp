// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "JournalTest.h"
#include "support/AllocationCount.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using JournalEvents = JournalStoreTest;

TEST_F(JournalEvents, HasInEachMemberNothingBeforeItIsRead) {
  const JournalEvent event;
  EXPECT_EQ(event.number, 0u);
  EXPECT_EQ(event.missed, 0u);
  EXPECT_EQ(event.timeNs, 0);
  EXPECT_EQ(event.threadId, 0u);
  EXPECT_EQ(event.callId, 0u);
  EXPECT_EQ(event.entityType, -1);
  EXPECT_EQ(event.count, 0u);
  EXPECT_EQ(event.id, 0u);
  EXPECT_EQ(event.cause, 0u);
  EXPECT_EQ(event.waitedNs, 0);
  EXPECT_EQ(event.ranNs, 0);
  EXPECT_EQ(event.line, 0u);
  EXPECT_EQ(event.column, 0u);
  EXPECT_FALSE(event.name.isCut);
}

TEST_F(JournalEvents, HasASetWithWhatItFoundAndWhatItReturned) {
  m_store.SetKalConfig(kVideo, "MaxFps", 15, false, false);
  m_store.SetKalConfig(kVideo, "MaxFps", 30, false, false);
  m_store.SetKalConfig(kVideo, "MaxFps", 30, false, false);
  m_store.SetKalConfig(kVideo, "MaxFps", "", true, false);

  const auto events = Events();
  ASSERT_THAT(events, SizeIs(4));
  EXPECT_EQ(ChangeOf(events[0]), "- -> 15");
  EXPECT_EQ(ChangeOf(events[1]), "15 -> 30");
  EXPECT_EQ(ChangeOf(events[2]), "30 -> 30");
  EXPECT_EQ(ChangeOf(events[3]), "30 -> ");
  EXPECT_EQ(events[0].result, kResultNobody);
  EXPECT_EQ(events[2].result, kResultUnchanged);
  for (const JournalEvent& event : events) {
    EXPECT_EQ(event.kind, JournalKind::kSet);
    EXPECT_EQ(event.number, events[0].number + static_cast<std::uint64_t>(&event - events.data()));
    EXPECT_EQ(event.missed, 0u);
    EXPECT_EQ(event.callId, kCall);
    EXPECT_EQ(event.group, kVideo);
    EXPECT_EQ(event.name.text, "MaxFps");
    EXPECT_EQ(event.threadId, GetThreadSelfId());
    EXPECT_EQ(event.count, 0u);
    EXPECT_EQ(event.way, JournalWay::kNone);
    EXPECT_FALSE(event.thrown);
    EXPECT_NE(event.timeNs, 0);
  }
}

TEST_F(JournalEvents, HasATransientSetAsThat) {
  m_store.SetKalConfig(kVideo, "Key", 1, false, false);
  m_store.SetKalConfig(kVideo, "Key", 2, false, true);
  const auto events = Events();
  EXPECT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kTransientSet));
  EXPECT_EQ(ChangeOf(events[1]), "1 -> 2");
}

TEST_F(JournalEvents, HasSetsThatAreRefused) {
  const auto noGroup = static_cast<KalConfigGroup>(13);
  EXPECT_EQ(m_store.SetKalConfig(noGroup, "MaxFps", 1, false, false), kResultBadArgument);
  EXPECT_EQ(m_store.SetKalConfig(kVideo, nullptr, 1, false, false), kResultBadArgument);
  EXPECT_EQ(m_store.SetKalConfig(kVideo, "", 1, false, false), kResultBadArgument);
  EXPECT_EQ(m_store.SetKalConfig(kVideo, "MaxFps", {}, false, true), kResultBadArgument);
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(4));
  for (const JournalEvent& event : events) {
    EXPECT_EQ(event.result, kResultBadArgument);
    EXPECT_FALSE(event.oldValue);
  }
  EXPECT_EQ(events[0].group, noGroup);
  EXPECT_EQ(events[1].name.text, "");
  EXPECT_EQ(events[2].newValue->text, "1");
  EXPECT_EQ(events[3].kind, JournalKind::kTransientSet);
  EXPECT_FALSE(events[3].newValue);
}

TEST_F(JournalEvents, HasRemovalsWithWhatTheyTook) {
  m_store.SetKalConfig(kVideo, "MaxFps", 15, false, false);
  m_store.SetKalConfig(kVideo, "MaxWidth", 640, false, false);
  m_store.RemoveKalConfig(kVideo, "MaxFps");
  m_store.RemoveKalConfig(kVideo, "MaxFps");
  m_store.RemoveKalConfigByGroup(kVideo);
  ConfigData value;
  EXPECT_EQ(m_store.GetKalConfig(kVideo, "MaxFps", value), kResultNotFound);

  const auto events = Events({JournalKind::kRemoved, JournalKind::kGroupRemoved});
  ASSERT_THAT(events, SizeIs(3));
  EXPECT_EQ(ChangeOf(events[0]), "15 -> -");
  EXPECT_EQ(events[0].count, 1u);
  EXPECT_EQ(events[0].name.text, "MaxFps");
  EXPECT_EQ(ChangeOf(events[1]), "- -> -");
  EXPECT_EQ(events[1].count, 0u);
  EXPECT_EQ(events[2].kind, JournalKind::kGroupRemoved);
  EXPECT_EQ(events[2].count, 1u);
  EXPECT_EQ(events[2].group, kVideo);
}

TEST_F(JournalEvents, SayHowLongAnImportRan) {
  m_store.ApplyKalConfigs(R"({"Video": [{"key": "MaxFps", "value": "15"}]})");
  m_store.SetKalConfig(kVideo, "MaxFps", 16, false, false);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kApplied, JournalKind::kSet));
  const std::int64_t endNs = events[1].timeNs + events[1].ranNs;
  EXPECT_LE(events[1].timeNs, events[0].timeNs);
  EXPECT_GE(endNs, events[0].timeNs);
  EXPECT_LE(endNs, events[2].timeNs);
}

TEST_F(JournalEvents, NameTheInnermostDocumentThatIsNamed) {
  const auto apply = [&] { m_store.ApplyKalConfigs(R"({"Video": [{"key": "MaxFps", "value": "15"}]})"); };
  {
    const JournalDocument outer("outer.json");
    {
      const JournalDocument inner("inner.json");
      apply();
    }
    apply();
  }
  apply();
  std::vector<std::string> documents;
  for (const JournalEvent& event : Events({JournalKind::kSet})) documents.push_back(event.document.text);
  EXPECT_THAT(documents, ElementsAre("inner.json", "outer.json", ""));
}

TEST_F(JournalEvents, HasAnImportWithTheSetsThatItMade) {
  const JournalDocument document("lab.json");
  const char* const text =
      "{\"Video\": [{\"key\": \"MaxFps\", \"value\": \"15\"},\n"
      "           {\"value\": \"640\", \"key\": \"MaxWidth\"}],\n"
      " \"Audio\": [{\"key\": 1}, {\"key\": \"Bitrate\", \"value\": \"32000\"}]}";
  EXPECT_EQ(m_store.ApplyKalConfigs(text), kResultOk);
  m_store.SetKalConfig(kVideo, "MaxFps", 16, false, false);

  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSet, JournalKind::kSet, JournalKind::kSet,
                                           JournalKind::kApplied, JournalKind::kSet));
  const auto place = [&](std::size_t index) {
    const JournalEvent& event = events[index];
    return event.name.text + " " + event.document.text + ":" + std::to_string(event.line) + ":" +
           std::to_string(event.column);
  };
  EXPECT_EQ(place(0), "Bitrate lab.json:3:32");
  EXPECT_EQ(place(1), "MaxFps lab.json:1:20");
  EXPECT_EQ(place(2), "MaxWidth lab.json:2:36");
  EXPECT_EQ(place(3), " lab.json:0:0");
  EXPECT_EQ(place(4), "MaxFps :0:0");
  EXPECT_EQ(events[3].result, kResultOk);
  EXPECT_EQ(events[3].count, 3u);
  EXPECT_EQ(events[3].caller != nullptr, true);
}

TEST_F(JournalEvents, HasThePlacesOfAnImportWhoseGroupsAreRepeatedAndOutOfOrder) {
  m_store.ApplyKalConfigs(
      "{\"Video\":[{\"key\":\"Old\",\"value\":\"1\"}],\n\"Video\":[\n{\"key\":\"A\",\"value\":\"1\"}, "
      "{\"value\":\n"
      "\"1\",\"key\":\"B\"}],\"Nobody\":[{\"key\":\"C\"}],\n\n\"Audio\":[{\"key\":\"D\",\"value\":\"\"}]}");
  std::vector<std::string> places;
  for (const JournalEvent& event : Events({JournalKind::kSet})) {
    places.push_back(event.name.text + " " + std::to_string(event.line) + ":" + std::to_string(event.column));
  }
  EXPECT_THAT(places, ElementsAre("D 6:17", "A 3:8", "B 4:11"));
}

TEST_F(JournalEvents, HasAnImportThatAllocatesNothingMore) {
  std::string document = "{\"Video\":[";
  for (int i = 0; i < 1000; ++i) {
    document += std::string(i == 0 ? "" : ",") + "{\"key\":\"K" + std::to_string(i) + "\",\"value\":\"v\"}";
  }
  document += "]}";
  m_store.ApplyKalConfigs(document.c_str());
  const auto allocationsOfImport = [&] {
    const AllocationCount allocations;
    m_store.ApplyKalConfigs(document.c_str());
    return allocations.Count();
  };
  const std::size_t on = allocationsOfImport();
  StopJournal();
  EXPECT_EQ(on, allocationsOfImport());
}

TEST_F(JournalEvents, HasAnImportThatACallbackEnded) {
  m_store.SubscribeConfig(
      kVideo, "MaxFps", [](const KalConfigEvent&) { throw std::runtime_error("no"); }, nullptr, false);
  Events();
  const char* const text = R"({"Video":[{"key":"MaxFps","value":"15"},{"key":"MaxWidth","value":"640"}]})";
  EXPECT_THROW(m_store.ApplyKalConfigs(text), std::runtime_error);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events),
              ElementsAre(JournalKind::kSet, JournalKind::kDelivered, JournalKind::kApplied));
  EXPECT_EQ(events[2].count, 1u);
  ASSERT_TRUE(events[2].thrown);
  EXPECT_EQ(events[2].thrown->text, "no");
}

TEST_F(JournalEvents, HasAnImportThatIsRefused) {
  EXPECT_EQ(m_store.ApplyKalConfigs("[]"), kResultNotFound);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kApplied));
  EXPECT_EQ(events[0].result, kResultNotFound);
  EXPECT_EQ(events[0].count, 0u);
  EXPECT_EQ(events[0].document.text, "");
}

TEST_F(JournalEvents, KnowsNoPlaceForASetInACallbackOfAnImport) {
  m_store.SubscribeConfig(
      kVideo, "MaxFps",
      [this](const KalConfigEvent&) { m_store.SetKalConfig(kVideo, "Nested", 1, false, false); }, nullptr,
      false);
  const JournalDocument document("lab.json");
  m_store.ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"15"}]})");
  const auto events = Events({JournalKind::kSet});
  ASSERT_THAT(events, SizeIs(2));
  EXPECT_EQ(events[0].document.text, "lab.json");
  EXPECT_EQ(events[1].name.text, "Nested");
  EXPECT_EQ(events[1].document.text, "");
  EXPECT_EQ(events[1].line, 0u);
}

TEST_F(JournalEvents, HasSubscriptionsAndBindingsByTheirIds) {
  const SubscribeId_t subscribed =
      m_store.SubscribeConfig(kVideo, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  const SubscribeId_t bound =
      m_store.BindConfig(kVideo, "Computed", [](const KalConfigEvent&) { return ConfigData(1); });
  m_store.UnsubscribeConfig(bound);
  m_store.UnsubscribeConfig(subscribed);
  m_store.UnsubscribeConfig(subscribed);
  m_store.SubscribeConfig(kVideo, "", [](const KalConfigEvent&) {}, nullptr, false);

  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kSubscribed, JournalKind::kBound, JournalKind::kEnded,
                                           JournalKind::kEnded));
  EXPECT_EQ(events[0].id, subscribed);
  EXPECT_EQ(events[1].id, bound);
  EXPECT_EQ(events[2].id, bound);
  EXPECT_EQ(events[3].id, subscribed);
  EXPECT_EQ(events[2].name.text, "Computed");
  EXPECT_EQ(events[3].group, kVideo);
}

TEST_F(JournalEvents, HasTheEndOfSubscriptionsAndBindingsThatEndWithTheirStore) {
  IKalConfig* store = nullptr;
  CreateKalConfig(8, &store);
  const SubscribeId_t subscribed =
      store->SubscribeConfig(kVideo, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  const SubscribeId_t bound =
      store->BindConfig(kVideo, "Computed", [](const KalConfigEvent&) { return ConfigData(1); });
  Events();
  CleanUpKalConfig(8);
  ReleaseKalConfig(store);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kStoreCleanedUp, JournalKind::kStoreEnded,
                                           JournalKind::kEnded, JournalKind::kEnded));
  EXPECT_EQ(events[2].id, subscribed);
  EXPECT_EQ(events[3].id, bound);
  EXPECT_EQ(events[3].callId, 8u);
}

TEST_F(JournalEvents, HasWhatABindingAnswers) {
  m_store.BindConfig(kVideo, "Computed", [](const KalConfigEvent&) { return ConfigData(42); });
  m_store.BindConfig(kVideo, "Failing",
                     [](const KalConfigEvent&) -> ConfigData { throw std::runtime_error("no"); });
  ConfigData value;
  EXPECT_EQ(m_store.GetDynamicConfig(kVideo, "Computed", value, 0), kResultOk);
  EXPECT_EQ(m_store.GetDynamicConfig(kVideo, "Unbound", value, 0), kResultNobody);
  EXPECT_THROW(m_store.GetDynamicConfig(kVideo, "Failing", value, 0), std::runtime_error);
  const auto events = Events({JournalKind::kAsked});
  ASSERT_THAT(events, SizeIs(3));
  EXPECT_EQ(events[0].newValue->text, "42");
  EXPECT_EQ(events[0].result, kResultOk);
  EXPECT_GE(events[0].ranNs, 0);
  EXPECT_FALSE(events[1].newValue);
  EXPECT_EQ(events[1].result, kResultNobody);
  EXPECT_EQ(events[2].thrown->text, "no");
}

TEST_F(JournalEvents, FollowsAStoreFromItsBeginningToItsEnd) {
  IKalConfig* store = nullptr;
  IKalConfig* shared = nullptr;
  CreateKalConfig(8, &store);
  CreateKalConfig(8, &shared);
  CleanUpKalConfig(8);
  CleanUpKalConfig(8);
  ReleaseKalConfig(shared);
  ReleaseKalConfig(store);
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kStoreMade, JournalKind::kStoreShared,
                                           JournalKind::kStoreCleanedUp, JournalKind::kStoreEnded));
  const std::uint32_t counts[] = {2, 3, 2, 0};
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(events[i].callId, 8u);
    EXPECT_EQ(events[i].count, counts[i]);
  }
}

TEST_F(JournalTest, HasTheEndOfEveryStoreThatIsDestroyed) {
  for (const std::uint32_t callId : {8, 9}) {
    IKalConfig* store = nullptr;
    CreateKalConfig(callId, &store);
  }
  DestroyKalConfig();
  std::vector<std::uint32_t> ended;
  for (const JournalEvent& event : Events({JournalKind::kStoreEnded})) {
    ended.push_back(event.callId);
    EXPECT_EQ(event.count, 0u);
  }
  EXPECT_THAT(ended, ElementsAre(8, 9));
}

TEST_F(JournalEvents, FollowsAStatisticsObject) {
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_CONTENT_AUDIO, 8, &entity);
  createTesselEntity(KAL_TESSEL_CONTENT_AUDIO, 8, &entity);
  releaseTesselEntity(KAL_TESSEL_CONTENT_AUDIO, 8, entity);
  auto* const audio = static_cast<IKalAudioInfo*>(entity);
  static_cast<KalContentAudioStatisticInfo*>(audio)->Release();
  const auto events = Events();
  ASSERT_THAT(KindsOf(events), ElementsAre(JournalKind::kStatisticsMade, JournalKind::kStatisticsReleased,
                                           JournalKind::kStatisticsEnded));
  for (const JournalEvent& event : events) {
    EXPECT_EQ(event.callId, 8u);
    EXPECT_EQ(event.entityType, KAL_TESSEL_CONTENT_AUDIO);
  }
  EXPECT_EQ(events[1].count, 1u);
}

TEST_F(JournalEvents, CutsLongStringsAndSaysSo) {
  const std::string whole(kJournalLongestValue, 'a');
  const std::string longer = whole + "b";
  // The last character would end behind the limit.
  const std::string umlauts = std::string(kJournalLongestValue - 1, 'c') + "\u00fc!";
  m_store.SetKalConfig(kVideo, longer.c_str(), whole, false, false);
  m_store.SetKalConfig(kVideo, longer.c_str(), umlauts, false, false);
  ConfigData value;
  for (const std::string& name : {whole, longer}) m_store.GetDynamicConfig(kVideo, name.c_str(), value, {});
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(4));
  EXPECT_EQ(events[0].name.text, whole);
  EXPECT_TRUE(events[0].name.isCut);
  EXPECT_EQ(events[0].newValue->text, whole);
  EXPECT_FALSE(events[0].newValue->isCut);
  EXPECT_EQ(events[1].newValue->text, umlauts.substr(0, kJournalLongestValue - 1));
  EXPECT_TRUE(events[1].newValue->isCut);
  EXPECT_EQ(events[2].name.text, whole);
  EXPECT_FALSE(events[2].name.isCut);
  EXPECT_EQ(events[3].name.text, whole);
  EXPECT_TRUE(events[3].name.isCut);
}

TEST_F(JournalEvents, KeepsZeroBytesOfAValue) {
  m_store.SetKalConfig(kVideo, "Key", std::string("a\0b", 3), false, false);
  EXPECT_EQ(Events().at(0).newValue->text, std::string("a\0b", 3));
}

TEST_F(JournalEvents, HasNothingOfReads) {
  ConfigData value;
  m_store.GetKalConfig(kVideo, "MaxFps", value);
  m_store.DumpKalConfigs(kAllConfigGroups);
  EXPECT_THAT(Events(), IsEmpty());
}

}  // namespace
}  // namespace kalStore
