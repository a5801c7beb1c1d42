// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <thread>

#include "InspectTest.h"
#include "support/Gate.h"

// Where a look is taken, and what it must not change.

namespace kalStore {
namespace {

using ::testing::IsEmpty;

class InspectPlaces : public InspectTest {
 protected:
  InspectPlaces() {
    set(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30);
    m_store.SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "Other", [](const KalConfigEvent&) { ADD_FAILURE() << "called back"; },
        nullptr, false);
    m_store.BindConfig(KAL_CONFIG_GROUP_VIDEO, "Other", [](const KalConfigEvent&) {
      ADD_FAILURE() << "asked";
      return ConfigData();
    });
  }

  StatsRef<VideoStats> m_video{kInspected};
  StatsRef<AudioStats> m_audio{kInspected};
};

TEST_F(InspectPlaces, ALookWritesNoTraceLineAndNoEventAndChangesNoCount) {
  StartJournal(64);
  const TraceLog trace(2);
  const std::uint64_t next = NextJournalNumber();
  EXPECT_EQ(LookAtAll(), 1u + 1 + 2 + 2);
  EXPECT_EQ(LookAtAll(), 1u + 1 + 2 + 2);
  EXPECT_EQ(NextJournalNumber(), next);
  EXPECT_THAT(trace.Lines(), IsEmpty());
  StopJournal();
  EXPECT_EQ(ReferencesOf(kInspected), 2u);
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_VIDEO, kInspected, &entity);
  EXPECT_EQ(releaseTesselEntity(KAL_TESSEL_VIDEO, kInspected, entity), 1);
}

TEST_F(InspectPlaces, WorksInACallbackAndInABinding) {
  std::size_t found = 0;
  m_store.SubscribeConfig(
      KAL_CONFIG_GROUP_AUDIO, "Gain", [&](const KalConfigEvent&) { found = LookAtAll(); }, nullptr, false);
  set(KAL_CONFIG_GROUP_AUDIO, "Gain", 1);
  EXPECT_EQ(found, 1u + 2 + 3 + 2);
  m_store.BindConfig(KAL_CONFIG_GROUP_AUDIO, "Load",
                     [](const KalConfigEvent&) { return ConfigData(LookAtAll()); });
  ConfigData value;
  m_store.GetDynamicConfig(KAL_CONFIG_GROUP_AUDIO, "Load", value, {});
  EXPECT_EQ(value.ToInt(), 1 + 2 + 4 + 2);
}

TEST_F(InspectPlaces, WorksInATraceSinkAlsoWhereARegistryIsLocked) {
  static thread_local bool isLooking = false;
  static int looks = 0;
  looks = 0;
  set_util_trace_sink(
      [](void*, int, const char*, const char* text, unsigned int) {
        if (std::exchange(isLooking, true)) return;
        if (std::string_view(text).find("CKalTessel::") != std::string_view::npos) {
          EXPECT_GE(InspectStatistics().size(), 2u);
        } else {
          LookAtAll();
        }
        ++looks;
        isLooking = false;
      },
      nullptr);
  set_external_trace_mask(2);
  IKalConfig* other = nullptr;
  CreateKalConfig(kInspected + 1, &other);
  set(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 60);
  const SubscribeId_t id =
      m_store.SubscribeConfig(KAL_CONFIG_GROUP_AUDIO, "Gain", [](const KalConfigEvent&) {}, nullptr, false);
  m_store.UnsubscribeConfig(id);
  CleanUpKalConfig(kInspected + 1);
  ReleaseKalConfig(other);
  {
    const StatsRef<ContentVideoStats> video(kInspected);
  }
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
  EXPECT_GE(looks, 10);
  EXPECT_EQ(GetKalConfigSizeForUT(), 1u);
}

TEST_F(InspectPlaces, WorksWhileCapturesEndWithTheStore) {
  struct LooksAtItsEnd {
    explicit LooksAtItsEnd(std::size_t& count) : found(count) {}
    ~LooksAtItsEnd() { found = LookAtAll(); }

    std::size_t& found;
  };
  std::size_t found = 0;
  {
    const CallStore other(kInspected + 1, CallStore::kEndsCall);
    other->SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "A",
        [captured = std::make_shared<LooksAtItsEnd>(found)](const KalConfigEvent&) {}, nullptr, false);
  }
  EXPECT_EQ(found, 1u + 1 + 2 + 2);  // Nothing of the store that ends.
}

TEST_F(InspectPlaces, ShowsADeliveryThatAnotherThreadMakesAndDoesNotWaitForIt) {
  Gate entered;
  Gate leave;
  m_store.SubscribeConfig(
      KAL_CONFIG_GROUP_AUDIO, "Gain",
      [&](const KalConfigEvent&) {
        entered.Open();
        leave.Wait();
      },
      nullptr, false);
  unsigned long setterId = 0;
  std::thread setter([&] {
    setterId = GetThreadSelfId();
    set(KAL_CONFIG_GROUP_AUDIO, "Gain", 1);
  });
  entered.Wait();
  const InspectedSubscription found = InspectSubscriptions(kInspected).at(0);
  EXPECT_EQ(found.name, "Gain");
  EXPECT_EQ(found.deliveries, 1u);
  EXPECT_EQ(found.deliveringThreadId, setterId);
  leave.Open();
  setter.join();
  EXPECT_EQ(InspectSubscriptions(kInspected).at(0).deliveries, 0u);
  EXPECT_EQ(InspectSubscriptions(kInspected).at(0).deliveringThreadId, 0u);
}

TEST_F(InspectPlaces, ACopyHoldsNoCaptures) {
  const auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = m_store.SubscribeConfig(
      KAL_CONFIG_GROUP_AUDIO, "Gain", [captured](const KalConfigEvent&) {}, nullptr, false);
  const std::vector<InspectedSubscription> found = InspectSubscriptions(kInspected);
  m_store.UnsubscribeConfig(id);
  EXPECT_EQ(captured.use_count(), 1);
  EXPECT_EQ(found.at(0).id, id);
}

}  // namespace
}  // namespace kalStore
