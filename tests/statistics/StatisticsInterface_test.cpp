// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "tessel/ResultCode.h"

namespace {

template <class Info>
class StatisticsInterface : public ::testing::Test {};
using Infos = ::testing::Types<KalVideoStatisticInfo, KalAudioStatisticInfo, KalContentVideoStatisticInfo,
                               KalContentAudioStatisticInfo>;
TYPED_TEST_SUITE(StatisticsInterface, Infos);

TYPED_TEST(StatisticsInterface, CountsReferencesFromZero) {
  auto* info = new TypeParam(1);
  EXPECT_EQ(info->GetReference(), 0U);
  EXPECT_EQ(info->AddRef(), 1U);
  EXPECT_EQ(info->AddRef(), 2U);
  EXPECT_EQ(info->GetReference(), 2U);
  EXPECT_EQ(info->Release(), 1U);
  EXPECT_EQ(info->GetReference(), 1U);
  EXPECT_EQ(info->Release(), 0U);
}

template <class Info>
struct Watched : Info {
  explicit Watched(int& ended) : Info(1), m_ended(ended) {}
  ~Watched() override { ++m_ended; }
  int& m_ended;
};

TYPED_TEST(StatisticsInterface, EndsWithItsLastReferenceThroughAnyInterface) {
  int ended = 0;
  kal::IKalUnknown* unknown = new Watched<TypeParam>(ended);
  unknown->AddRef();
  unknown->AddRef();
  unknown->Release();
  EXPECT_EQ(ended, 0);
  EXPECT_EQ(unknown->Release(), 0U);
  EXPECT_EQ(ended, 1);
}

template <class Info>
struct Kept : Info {
  Kept() : Info(1) {}
  void OnReferenceDestory() override { ++destroyed; }
  int destroyed = 0;
};

TYPED_TEST(StatisticsInterface, LeavesItsEndToTheReferenceCountedPart) {
  Kept<TypeParam> info;
  info.AddRef();
  EXPECT_EQ(info.destroyed, 0);
  EXPECT_EQ(info.Release(), 0U);
  EXPECT_EQ(info.destroyed, 1);
}

TYPED_TEST(StatisticsInterface, GivesItsReferenceCountedPartForTheOneIdentifier) {
  TypeParam info(1);
  const kal::_tagUUID iid{0x00000000, 0x2013, 0x0114, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
  EXPECT_EQ(kalStore::kStatisticsInterfaceId, iid);
  void* part = nullptr;
  EXPECT_EQ(info.QueryInterface(iid, &part), kalStore::kResultOk);
  EXPECT_EQ(part, static_cast<kal::CKalUnknownImpl*>(&info));
  EXPECT_EQ(info.GetReference(), 1U);

  void* again = nullptr;
  EXPECT_EQ(static_cast<kal::CKalUnknownImpl*>(part)->QueryInterface(iid, &again), kalStore::kResultOk);
  EXPECT_EQ(again, part);
  EXPECT_EQ(static_cast<kal::IKalUnknown&>(info).QueryInterface(iid, &again), kalStore::kResultOk);
  EXPECT_EQ(again, part);
  EXPECT_EQ(info.GetReference(), 3U);
}

TYPED_TEST(StatisticsInterface, RefusesEveryOtherIdentifierByAnyByte) {
  TypeParam info(1);
  for (std::size_t i = 0; i < sizeof(kal::_tagUUID); ++i) {
    unsigned char bytes[sizeof(kal::_tagUUID)];
    std::memcpy(bytes, &kalStore::kStatisticsInterfaceId, sizeof bytes);
    bytes[i] ^= 0x80;
    kal::_tagUUID iid;
    std::memcpy(&iid, bytes, sizeof bytes);
    void* part = &info;
    EXPECT_EQ(info.QueryInterface(iid, &part), kalStore::kResultNoInterface) << i;
    EXPECT_EQ(part, nullptr) << i;
  }
  EXPECT_EQ(info.GetReference(), 0U);
}

TYPED_TEST(StatisticsInterface, RefusesANullOutput) {
  TypeParam info(1);
  EXPECT_EQ(info.QueryInterface(kalStore::kStatisticsInterfaceId, nullptr), kalStore::kResultNullOutput);
  EXPECT_EQ(info.QueryInterface(kal::_tagUUID{}, nullptr), kalStore::kResultNullOutput);
  EXPECT_EQ(info.GetReference(), 0U);
}

static_assert(std::is_abstract_v<kalStore::IKalMediaInfo> && std::is_abstract_v<kalStore::IKalVideoInfo> &&
              std::is_abstract_v<kalStore::IKalAudioInfo> && std::is_abstract_v<kal::IKalUnknown>);
static_assert(!std::is_copy_constructible_v<KalVideoStatisticInfo> &&
              !std::is_copy_assignable_v<KalAudioStatisticInfo>);

// Components built apart call by slot. A pointer to a virtual member holds its slot: (pointer - 1) / 8 here.
#if defined(__x86_64__)
template <class Member>
std::size_t SlotOf(Member member) {
  std::uintptr_t words[2];
  static_assert(sizeof words == sizeof member);
  std::memcpy(words, &member, sizeof words);
  EXPECT_EQ(words[0] % 2, 1U) << "not virtual";
  return (words[0] - 1) / sizeof(void*);
}

template <class... Members>
void ExpectSlots(std::size_t first, Members... members) {
  for (std::size_t slot = first; const std::size_t actual : {SlotOf(members)...}) EXPECT_EQ(actual, slot++);
}

TEST(StatisticsSlots, FollowTheDocumentedOrderForAllMedia) {
  using I = kalStore::IKalMediaInfo;
  ExpectSlots(2, &I::UpdateTxMediaInfo, &I::UpdateRxMediaInfo, &I::GetTxMediaInfo, &I::GetRxMediaInfo,
              &I::reset, &I::GetCallId);
}

TEST(StatisticsSlots, FollowTheDocumentedOrderForVideo) {
  using I = kalStore::IKalVideoInfo;
  ExpectSlots(8, &I::UpdateVideoEncBitrateFps, &I::UpdateVideoEncFSAndDownType, &I::UpdatePerformanceWarnCnt,
              &I::UpdateNoiseLevel, &I::UpdateEncROIAreaRation, &I::UpdateVideoEncResolution,
              &I::UpdateVideoEnableHWEnc, &I::UpdateEncodeControlTargetFps, &I::UpdateVideoProcessInfo,
              &I::resetTxVideoStatisticInfo, &I::UpdateAV1Metrics, &I::UpdateVideoEncIdrReqNum,
              &I::UpdateVideoEncIdrSentAndReasonCnt, &I::UpdateFBufferOcuppiedVideo, &I::UpdateProfile,
              &I::UpdateEncodeParam, &I::UpdateOneVideoLayerInfo, &I::UpdateStreamsInfo,
              &I::UpdateVideoConfigureChange, &I::UpdateVideoEncFrameCnt, &I::UpdateVideoCapturedFrameCnt,
              &I::UpdateVideoFeedToEncoderFramesCnt, &I::UpdateVideoEncOtherInfo);
  using C = KalVideoStatisticInfo;
  ExpectSlots(31, &C::AddRef, &C::Release, &C::GetReference, &C::QueryInterface);
}

TEST(StatisticsSlots, FollowTheDocumentedOrderForAudio) {
  using I = kalStore::IKalAudioInfo;
  ExpectSlots(8, &I::updateSendCodecInfo, &I::updateTxBitRate, &I::updateRxBitRate,
              &I::updateUnstableEventCount, &I::updateAECLevel, &I::updateNoiseLevel, &I::updateSpeechLevel,
              &I::updatePayloadType, &I::updateDecodeInfo, &I::updateJitterBufferStatistics,
              &I::updateE2EDelayInfo,
              static_cast<void (I::*)(std::int32_t, bool)>(&I::updateCodecStaticsLBRRflag),
              static_cast<void (I::*)(bool)>(&I::updateCodecStaticsLBRRflag), &I::updateTxEncodeDropFrameinMS,
              &I::updateAVSyncStatistics, &I::GetRxAudioInfo, &I::GetAVSyncInfo);
  using C = KalAudioStatisticInfo;
  ExpectSlots(25, &C::AddRef, &C::Release, &C::GetReference, &C::QueryInterface);
}

TEST(StatisticsSlots, FollowTheDocumentedOrderForReferences) {
  using I = kal::IKalUnknown;
  ExpectSlots(0, &I::AddRef, &I::Release, &I::QueryInterface, &I::GetReference);
  using C = kal::CKalUnknownImpl;
  ExpectSlots(2, &C::OnReferenceDestory, &C::QueryInterface);
}
#endif

}  // namespace
