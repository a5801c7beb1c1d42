// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <thread>

#include "FailEachAllocation.h"
#include "tessel/CKalTessel.h"
#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalVideoInfo.h"

using namespace kalStore;

namespace {

constexpr std::uint32_t kCall = 7;

class StatisticsAllocationFailure : public testing::TestWithParam<KalTesselEntityType> {};

TEST_P(StatisticsAllocationFailure, AnEntityIsMadeWholeOrNotAtAll) {
  static int before = 0;
  struct Slot {
    void* entity = &before;  // Null when it is not made.
  };
  const std::size_t failed = FailEachAllocation(
      [] { return Slot{}; }, [](Slot& slot) { createTesselEntity(GetParam(), kCall, &slot.entity); },
      [](Slot& slot, bool done) {
        EXPECT_EQ(slot.entity != nullptr, done);
        EXPECT_EQ(kalTesselInstant.isTesselEntityExisted(GetParam(), kCall), done);
        std::thread([done] {
          void* other = nullptr;
          EXPECT_EQ(createTesselEntity(GetParam(), kCall, &other), kResultOk);
          EXPECT_EQ(releaseTesselEntity(GetParam(), kCall, other), done ? 1 : 0);
        }).join();
        EXPECT_EQ(releaseTesselEntity(GetParam(), kCall, &slot), done ? 0 : -1);
      });
  EXPECT_EQ(failed, 2U);
}

TEST_P(StatisticsAllocationFailure, UpdatingAndReadingAllocatesNothing) {
  void* entity = nullptr;
  ASSERT_EQ(createTesselEntity(GetParam(), kCall, &entity), kResultOk);
  auto block = std::make_unique<st_KalVideoTxBlock>();
  const AllocationCount allocations;
  if (GetParam() == KAL_TESSEL_VIDEO || GetParam() == KAL_TESSEL_CONTENT_VIDEO) {
    auto* video = static_cast<IKalVideoInfo*>(entity);
    video->UpdateVideoEncFrameCnt(1);
    video->UpdateAV1Metrics(1, "a name of more than fifteen characters", "another");
    video->GetTxMediaInfo(block.get(), true);
  } else {
    auto* audio = static_cast<IKalAudioInfo*>(entity);
    audio->updateTxBitRate(1);
    audio->GetTxMediaInfo(block.get(), true);
  }
  EXPECT_EQ(allocations.Count(), 0U);
  EXPECT_EQ(releaseTesselEntity(GetParam(), kCall, entity), 0);
}

INSTANTIATE_TEST_SUITE_P(Types, StatisticsAllocationFailure,
                         testing::Values(KAL_TESSEL_AUDIO, KAL_TESSEL_VIDEO, KAL_TESSEL_CONTENT_VIDEO,
                                         KAL_TESSEL_CONTENT_AUDIO));

}  // namespace
