// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <thread>

#include "InspectTest.h"
#include "reliability/FailEachAllocation.h"

namespace kalStore {
namespace {

struct FailureState {
  FailureState() {
    for (int i = 0; i < 100; ++i) {
      const std::string name = "A name of more than fifteen characters " + std::to_string(i);
      (*store)->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name.c_str(), std::string(60, 'v'), false, false);
      (*store)->SubscribeConfig(
          KAL_CONFIG_GROUP_VIDEO, name.c_str(), [held = this->captured](const KalConfigEvent&) {}, nullptr,
          false);
    }
  }
  std::shared_ptr<int> captured = std::make_shared<int>();
  std::unique_ptr<CallStore> store = std::make_unique<CallStore>(kInspected, CallStore::kEndsCall);
  std::unique_ptr<StatsRef<VideoStats>> video = std::make_unique<StatsRef<VideoStats>>(kInspected);
};

// A lock that were still held would keep the other thread for ever.
void ExpectUntouched(FailureState& state) {
  EXPECT_EQ(state.captured.use_count(), 101);
  std::thread([&] {
    EXPECT_EQ((*state.store)->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Other", 1, false, false), kResultNobody);
    EXPECT_EQ(ReferencesOf(kInspected), 2u);
    const StatsRef<VideoStats> shared(kInspected);
    EXPECT_EQ(InspectStatistics().at(0).references, 2u);
    EXPECT_EQ(InspectSubscriptions(kInspected).size(), 100u);
  }).join();
}

template <class Look>
void FailIn(Look look) {
  const std::size_t failed =
      FailEachAllocation([] { return std::make_unique<FailureState>(); }, [&](auto&) { look(); },
                         [](auto& state, bool) { ExpectUntouched(*state); });
  EXPECT_GE(failed, 1u);
}

TEST(InspectAllocationFailure, ChangesNothingAndReleasesEveryLock) {
  FailIn([] { InspectCalls(); });
  FailIn([] { InspectSettings(kInspected); });
  FailIn([] { InspectSubscriptions(kInspected); });
  FailIn([] { InspectStatistics(); });
}

TEST(InspectAllocationFailure, ChangesNothingWithTheJournalOn) {
  StartJournal(64);
  FailIn([] { InspectSettings(kInspected); });
  StopJournal();
}

TEST(InspectAllocationFailure, ReadingABlockAllocatesNothing) {
  const StatsRef<VideoStats> video(kInspected);
  const StatsRef<AudioStats> audio(kInspected);
  const auto sent = std::make_unique<st_KalVideoTxBlock>();
  const auto blocks = std::make_unique<InspectedAudio>();
  const AllocationCount allocations;
  EXPECT_EQ(InspectVideo(KAL_TESSEL_VIDEO, kInspected, *sent), kResultOk);
  EXPECT_EQ(InspectAudio(KAL_TESSEL_AUDIO, kInspected, *blocks), kResultOk);
  EXPECT_EQ(allocations.Count(), 0u);
}

}  // namespace
}  // namespace kalStore
