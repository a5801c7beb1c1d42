// SPDX-License-Identifier: Apache-2.0
#include "InspectTest.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class InspectStores : public InspectTest {};

TEST(Inspected, IsNothingUntilItIsLookedAt) {
  const InspectedCall call;
  const InspectedSubscription subscription;
  const InspectedStatistics statistics;
  for (const std::uint32_t number :
       {call.callId, call.references, subscription.deliveries, statistics.callId, statistics.references})
    EXPECT_EQ(number, 0u);
  EXPECT_FALSE(call.isCleanedUp);
  EXPECT_FALSE(subscription.isBinding);
  EXPECT_EQ(subscription.id, 0u);
  EXPECT_EQ(subscription.way, JournalWay::kNone);
  EXPECT_EQ(subscription.runThread, nullptr);
  EXPECT_EQ(subscription.runThreadId, 0u);
  EXPECT_EQ(subscription.deliveringThreadId, 0u);
  EXPECT_EQ(statistics.type, KAL_TESSEL_AUDIO);
}

TEST_F(InspectStores, GivesTheCallsAndTheirReferences) {
  EXPECT_EQ(ReferencesOf(kInspected), 2u);
  IKalConfig* shared = nullptr;
  CreateKalConfig(kInspected, &shared);
  IKalConfig* other = nullptr;
  CreateKalConfig(kInspected + 1, &other);

  const std::vector<InspectedCall> calls = InspectCalls();
  ASSERT_THAT(calls, SizeIs(2));
  EXPECT_EQ(calls[0].callId, kInspected);
  EXPECT_EQ(calls[0].references, 3u);
  EXPECT_FALSE(calls[0].isCleanedUp);
  EXPECT_EQ(calls[1].callId, kInspected + 1);
  EXPECT_EQ(calls[1].references, 2u);

  CleanUpKalConfig(kInspected + 1);
  EXPECT_EQ(InspectCalls().at(1).references, 1u);
  EXPECT_TRUE(InspectCalls().at(1).isCleanedUp);
  ReleaseKalConfig(other);
  ReleaseKalConfig(shared);
  EXPECT_THAT(InspectCalls(), SizeIs(1));
  EXPECT_EQ(ReferencesOf(kInspected), 2u);
}

TEST_F(InspectStores, SaysNothingBeforeItIsFilled) {
  const InspectedCall call;
  EXPECT_EQ(call.callId, 0u);
  EXPECT_EQ(call.references, 0u);
  EXPECT_FALSE(call.isCleanedUp);
  const InspectedSubscription subscription;
  EXPECT_EQ(subscription.id, 0u);
  EXPECT_FALSE(subscription.isBinding);
  EXPECT_EQ(subscription.runThreadId, 0u);
  EXPECT_EQ(subscription.deliveries, 0u);
  EXPECT_EQ(subscription.deliveringThreadId, 0u);
  const InspectedStatistics statistics;
  EXPECT_EQ(statistics.callId, 0u);
  EXPECT_EQ(statistics.references, 0u);
}

TEST_F(InspectStores, GivesNothingOfACallWithoutAStoreAndMakesNone) {
  EXPECT_THAT(InspectSettings(1), IsEmpty());
  EXPECT_THAT(InspectSubscriptions(1), IsEmpty());
  EXPECT_EQ(GetKalConfigSizeForUT(), 1u);
}

TEST_F(InspectStores, GivesTheSettingsByGroupAndName) {
  set(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30);
  set(KAL_CONFIG_GROUP_VIDEO, "Codec", "av1");
  set(KAL_CONFIG_GROUP_COMMON, "Locale", "de");
  set(KAL_CONFIG_GROUP_UNIT_TEST, "Last", "");
  EXPECT_THAT(SettingsOf(kInspected),
              ElementsAre("Common Locale=de", "Video Codec=av1", "Video MaxFps=30", "UnitTest Last="));
  for (const InspectedSetting& setting : InspectSettings(kInspected)) {
    EXPECT_TRUE(setting.value.IsValid());
  }
  m_store.RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO);
  m_store.SetKalConfig(KAL_CONFIG_GROUP_COMMON, "Locale", "fr", false, true);
  EXPECT_THAT(SettingsOf(kInspected), ElementsAre("UnitTest Last="));
}

TEST_F(InspectStores, GivesNamesAndValuesOfAnySizeWhole) {
  const std::string withZero("a\0b", 3);
  const std::string longName(300, 'n');
  const std::string longValue(1 << 20, 'v');
  set(KAL_CONFIG_GROUP_AUDIO, "Zero", withZero);
  set(KAL_CONFIG_GROUP_AUDIO, longName.c_str(), longValue);
  for (int i = 0; i < 1000; ++i) set(KAL_CONFIG_GROUP_VIDEO, ("Name" + std::to_string(i)).c_str(), i);
  const std::vector<InspectedSetting> settings = InspectSettings(kInspected);
  ASSERT_THAT(settings, SizeIs(1002));
  EXPECT_EQ(settings[0].value.ToString(), withZero);
  EXPECT_EQ(settings[1].name, longName);
  EXPECT_EQ(settings[1].value.ToString(), longValue);
  for (std::size_t i = 2; i < settings.size(); ++i) {
    EXPECT_EQ(settings[i].name, "Name" + settings[i].value.ToString());
  }
}

TEST_F(InspectStores, GivesSubscriptionsAndBindingsInTheOrderOfRegistration) {
  const auto ignore = [](const KalConfigEvent&) {};
  ACmThread thread("media");
  thread.Start();
  m_store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", ignore, nullptr, false);
  m_store.BindConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", [](const KalConfigEvent&) { return ConfigData(1); });
  m_store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", ignore, &thread, true);
  const SubscribeId_t handed =
      m_store.SubscribeConfig(KAL_CONFIG_GROUP_AUDIO, "Gain", ignore, &thread, false);

  std::vector<InspectedSubscription> found = InspectSubscriptions(kInspected);
  EXPECT_THAT(SubscriptionsOf(kInspected),
              ElementsAre("4 Audio Gain", "1 Video MaxFps", "2 Video MaxFps binding", "3 Video MaxFps"));
  EXPECT_EQ(found[0].way, JournalWay::kHandedOver);
  EXPECT_EQ(found[1].way, JournalWay::kDirect);
  EXPECT_EQ(found[2].way, JournalWay::kNone);
  EXPECT_EQ(found[3].way, JournalWay::kPosted);
  EXPECT_EQ(found[3].runThread, &thread);
  EXPECT_EQ(found[3].runThreadId, thread.GetThreadId());
  EXPECT_EQ(found[1].runThread, nullptr);
  EXPECT_EQ(found[1].runThreadId, 0u);
  for (const InspectedSubscription& each : found) {
    EXPECT_EQ(each.deliveries, 0u);
    EXPECT_EQ(each.deliveringThreadId, 0u);
  }

  thread.Stop();
  m_store.UnsubscribeConfig(handed);
  found = InspectSubscriptions(kInspected);
  ASSERT_THAT(found, SizeIs(3));
  EXPECT_EQ(found[2].runThreadId, 0u);
  for (const InspectedSubscription& each : found) m_store.UnsubscribeConfig(each.id);
  EXPECT_THAT(InspectSubscriptions(kInspected), IsEmpty());
}

TEST_F(InspectStores, GivesTheIdsThatAFacadeGave) {
  KalConfigHelper early;
  early.SubscribeConfig("Early", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  KalConfigHelper facade(kInspected);
  const SubscribeId_t id =
      facade.SubscribeConfig("MaxFps", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  EXPECT_THAT(SubscriptionsOf(kInspected), ElementsAre(std::to_string(id) + " Video MaxFps"));
  early.SetCallId(kInspected);
  EXPECT_THAT(InspectSubscriptions(kInspected), SizeIs(2));
}

TEST_F(InspectStores, ShowsDeliveriesInProgressAndWhoseTheyAre) {
  unsigned long deliveredBy = 0;
  const auto look = [&](const KalConfigEvent&) {
    const std::vector<InspectedSubscription> found = InspectSubscriptions(kInspected);
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].deliveries, 1u);
    deliveredBy = found[0].deliveringThreadId;
  };
  const SubscribeId_t direct = m_store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "A", look, nullptr, false);
  set(KAL_CONFIG_GROUP_VIDEO, "A", 1);
  EXPECT_EQ(deliveredBy, GetThreadSelfId());
  m_store.UnsubscribeConfig(direct);

  deliveredBy = 0;
  ACmThread thread("media");
  thread.Start();
  const SubscribeId_t handed = m_store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "A", look, &thread, false);
  EXPECT_EQ(deliveredBy, GetThreadSelfId());  // The initial delivery's: the thread that waits.
  m_store.UnsubscribeConfig(handed);
}

}  // namespace
}  // namespace kalStore
