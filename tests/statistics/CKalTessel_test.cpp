// SPDX-License-Identifier: Apache-2.0
#include "tessel/CKalTessel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "support/AllocationCount.h"
#include "support/CallingSink.h"
#include "support/TraceLog.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "tessel/ResultCode.h"

namespace {

using kalStore::CKalTessel;
using kalStore::KalTesselEntityType;
using kalStore::kalTesselInstant;
using kalStore::kResultNotFound;
using kalStore::kResultOk;

constexpr auto kAudio = kalStore::KAL_TESSEL_AUDIO;
constexpr auto kVideo = kalStore::KAL_TESSEL_VIDEO;
constexpr auto kContentVideo = kalStore::KAL_TESSEL_CONTENT_VIDEO;
constexpr auto kContentAudio = kalStore::KAL_TESSEL_CONTENT_AUDIO;
constexpr auto kUnknown = static_cast<KalTesselEntityType>(4);

static_assert(std::is_same_v<std::underlying_type_t<KalTesselEntityType>, std::int32_t>);
static_assert(kalStore::kAudioStreamCount == 20);
static_assert(kAudio == 0 && kVideo == 1 && kContentVideo == 2 && kContentAudio == 3);

std::string Hex(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(pointer));
  return text;
}

std::string Suffix(const CKalTessel& registry) {
  return " [this=" + Hex(&registry) + "]";
}

template <class Class, class Interface>
void ExpectMakes(KalTesselEntityType type) {
  void* entity = nullptr;
  ASSERT_EQ(createTesselEntity(type, 7, &entity), kResultOk);
  auto* media = static_cast<Interface*>(entity);
  EXPECT_EQ(typeid(*media), typeid(Class));
  EXPECT_EQ(media->GetCallId(), 7U);
  EXPECT_EQ(dynamic_cast<kal::IKalUnknown&>(*media).GetReference(), 1U);
  EXPECT_EQ(releaseTesselEntity(type, 7, entity), 0);
}

TEST(CKalTessel, MakesTheClassOfEachType) {
  ExpectMakes<KalAudioStatisticInfo, kalStore::IKalAudioInfo>(kAudio);
  ExpectMakes<KalVideoStatisticInfo, kalStore::IKalVideoInfo>(kVideo);
  ExpectMakes<KalContentVideoStatisticInfo, kalStore::IKalVideoInfo>(kContentVideo);
  ExpectMakes<KalContentAudioStatisticInfo, kalStore::IKalAudioInfo>(kContentAudio);
}

TEST(CKalTessel, SharesOneObjectPerTypeAndCall) {
  CKalTessel registry;
  std::vector<void*> entities;
  for (const auto type : {kAudio, kVideo, kContentVideo, kContentAudio}) {
    for (const std::uint32_t callId : {0U, 7U, 0xFFFFFFFFU}) {
      EXPECT_FALSE(registry.isTesselEntityExisted(type, callId));
      void* entity = registry.createOrGetTesselEntity(type, callId);
      ASSERT_NE(entity, nullptr);
      EXPECT_EQ(registry.createOrGetTesselEntity(type, callId), entity);
      EXPECT_TRUE(registry.isTesselEntityExisted(type, callId));
      for (void* other : entities) EXPECT_NE(entity, other);
      entities.push_back(entity);
    }
  }
  auto entity = entities.begin();
  for (const auto type : {kAudio, kVideo, kContentVideo, kContentAudio}) {
    for (const std::uint32_t callId : {0U, 7U, 0xFFFFFFFFU}) {
      EXPECT_EQ(registry.releaseTesselEntity(type, callId, *entity), 1);
      EXPECT_TRUE(registry.isTesselEntityExisted(type, callId));
      EXPECT_EQ(registry.releaseTesselEntity(type, callId, *entity++), 0);
      EXPECT_FALSE(registry.isTesselEntityExisted(type, callId));
    }
  }
}

TEST(CKalTessel, HasObjectsOfItsOwn) {
  CKalTessel registry;
  void* const own = registry.createOrGetTesselEntity(kAudio, 7);
  EXPECT_EQ(registry.createOrGetTesselEntity(kAudio, 7), own);
  EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(kAudio, 7));
  void* const other = kalTesselInstant.createOrGetTesselEntity(kAudio, 7);
  EXPECT_NE(other, own);
  EXPECT_TRUE(kalTesselInstant.isTesselEntityExisted(kAudio, 7));
  CKalTessel second;
  EXPECT_FALSE(second.isTesselEntityExisted(kAudio, 7));
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, own), 1);
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, own), 0);
  EXPECT_EQ(kalTesselInstant.releaseTesselEntity(kAudio, 7, other), 0);
}

TEST(CKalTessel, KnowsNoOtherTypes) {
  for (const std::int32_t type : {4, 5, -1, INT32_MAX, INT32_MIN}) {
    const auto unknown = static_cast<KalTesselEntityType>(type);
    int dummy = 0;
    void* entity = &dummy;
    EXPECT_EQ(createTesselEntity(unknown, 7, &entity), kResultNotFound) << type;
    EXPECT_EQ(entity, nullptr);
    EXPECT_EQ(kalTesselInstant.createOrGetTesselEntity(unknown, 7), nullptr);
    EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(unknown, 7));
    EXPECT_EQ(releaseTesselEntity(unknown, 7, &dummy), -1);
  }
}

TEST(CKalTessel, RefusesNullPointers) {
  EXPECT_EQ(createTesselEntity(kVideo, 7, nullptr), kResultNotFound);
  EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(kVideo, 7));

  void* entity = kalTesselInstant.createOrGetTesselEntity(kAudio, 7);
  EXPECT_EQ(releaseTesselEntity(kAudio, 7, nullptr), -1);
  EXPECT_EQ(kalTesselInstant.releaseTesselEntity(kAudio, 7, nullptr), -1);
  auto* info = static_cast<KalAudioStatisticInfo*>(static_cast<kalStore::IKalAudioInfo*>(entity));
  EXPECT_EQ(info->GetReference(), 1U);
  EXPECT_EQ(releaseTesselEntity(kAudio, 7, entity), 0);
}

TEST(CKalTessel, ForgetsAKeyWithItsLastReference) {
  void* entity = nullptr;
  ASSERT_EQ(createTesselEntity(kAudio, 7, &entity), kResultOk);
  static_cast<kalStore::IKalAudioInfo*>(entity)->updateTxBitRate(9);
  EXPECT_EQ(releaseTesselEntity(kAudio, 7, entity), 0);
  EXPECT_EQ(releaseTesselEntity(kAudio, 7, entity), -1);

  ASSERT_EQ(createTesselEntity(kAudio, 7, &entity), kResultOk);
  kalStore::st_KalAudioBlock block;
  static_cast<kalStore::IKalAudioInfo*>(entity)->GetTxMediaInfo(&block, false);
  EXPECT_EQ(block.bitrate, 0U) << "a later request makes a fresh object";
  EXPECT_EQ(releaseTesselEntity(kAudio, 7, entity), 0);
}

TEST(CKalTessel, ReleasesTheObjectOfTheKeyWhateverPointerComesWithIt) {
  void* entity = nullptr;
  ASSERT_EQ(createTesselEntity(kVideo, 8, &entity), kResultOk);
  ASSERT_EQ(createTesselEntity(kVideo, 8, &entity), kResultOk);
  int other = 0;
  EXPECT_EQ(releaseTesselEntity(kVideo, 8, &other), 1);
  EXPECT_EQ(releaseTesselEntity(kVideo, 8, &other), 0);
  EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(kVideo, 8));
}

TEST(CKalTessel, SharesTheCountWithDirectHolders) {
  void* entity = nullptr;
  ASSERT_EQ(createTesselEntity(kContentVideo, 8, &entity), kResultOk);
  auto* info = static_cast<KalVideoStatisticInfo*>(static_cast<kalStore::IKalVideoInfo*>(entity));
  EXPECT_EQ(info->AddRef(), 2U);
  EXPECT_EQ(releaseTesselEntity(kContentVideo, 8, entity), 1);
  EXPECT_TRUE(kalTesselInstant.isTesselEntityExisted(kContentVideo, 8));
  info->UpdateVideoEncFrameCnt(1);
  EXPECT_EQ(releaseTesselEntity(kContentVideo, 8, entity), 0);
}

kal::IKalUnknown& ReferencesOf(KalTesselEntityType type, void* entity) {
  if (type == kVideo || type == kContentVideo)
    return dynamic_cast<kal::IKalUnknown&>(*static_cast<kalStore::IKalVideoInfo*>(entity));
  return dynamic_cast<kal::IKalUnknown&>(*static_cast<kalStore::IKalAudioInfo*>(entity));
}

TEST(CKalTessel, ForgetsAnObjectThatEndsByItsOwnRelease) {
  for (const auto type : {kAudio, kVideo, kContentVideo, kContentAudio}) {
    SCOPED_TRACE(type);
    CKalTessel registry;
    void* entity = registry.createOrGetTesselEntity(type, 7);
    void* const neighbour = registry.createOrGetTesselEntity(type, 8);
    EXPECT_EQ(ReferencesOf(type, entity).AddRef(), 2U);
    EXPECT_EQ(registry.releaseTesselEntity(type, 7, entity), 1);
    EXPECT_EQ(ReferencesOf(type, entity).Release(), 0U);

    EXPECT_FALSE(registry.isTesselEntityExisted(type, 7));
    EXPECT_EQ(registry.releaseTesselEntity(type, 7, entity), -1);
    EXPECT_TRUE(registry.isTesselEntityExisted(type, 8)) << "its own entry alone";
    entity = registry.createOrGetTesselEntity(type, 7);
    EXPECT_EQ(ReferencesOf(type, entity).GetReference(), 1U) << "a later request makes a fresh object";
    EXPECT_EQ(registry.releaseTesselEntity(type, 7, entity), 0);
    EXPECT_EQ(registry.releaseTesselEntity(type, 8, neighbour), 0);
  }
}

TEST(CKalTessel, ForgetsAnObjectThatEndsThroughItsReferenceCountedPart) {
  CKalTessel registry;
  void* const entity = registry.createOrGetTesselEntity(kVideo, 7);
  void* part = nullptr;
  EXPECT_EQ(ReferencesOf(kVideo, entity).QueryInterface(kalStore::kStatisticsInterfaceId, &part), kResultOk);
  EXPECT_EQ(registry.releaseTesselEntity(kVideo, 7, entity), 1);
  EXPECT_EQ(static_cast<kal::CKalUnknownImpl*>(part)->ReleaseReference(), 0U);
  EXPECT_FALSE(registry.isTesselEntityExisted(kVideo, 7));
}

TEST(CKalTessel, ForgetsAnObjectByItsKeyThoughItsCallIdHasChanged) {
  CKalTessel registry;
  void* const entity = registry.createOrGetTesselEntity(kAudio, 7);
  static_cast<kalStore::IKalAudioInfo*>(entity)->reset(8);
  EXPECT_EQ(ReferencesOf(kAudio, entity).Release(), 0U);
  EXPECT_FALSE(registry.isTesselEntityExisted(kAudio, 7));
}

TEST(CKalTessel, MayBeUsedByASinkFromEachOfItsLines) {
  CKalTessel registry;
  const CallingSink sink("", [&] {
    for (const std::uint32_t callId : {7U, 8U}) {
      const bool isRegistered = registry.isTesselEntityExisted(kAudio, callId);
      void* const entity = registry.createOrGetTesselEntity(kAudio, callId);
      EXPECT_EQ(registry.createOrGetTesselEntity(kAudio, callId), entity);
      EXPECT_GE(ReferencesOf(kAudio, entity).Release(), 1U);
      EXPECT_EQ(registry.releaseTesselEntity(kAudio, callId, entity) > 0, isRegistered);
      EXPECT_EQ(registry.isTesselEntityExisted(kAudio, callId), isRegistered);
    }
    EXPECT_EQ(registry.createOrGetTesselEntity(kUnknown, 7), nullptr);
  });
  void* const entity = registry.createOrGetTesselEntity(kAudio, 7);
  EXPECT_EQ(registry.createOrGetTesselEntity(kAudio, 7), entity);
  EXPECT_EQ(registry.createOrGetTesselEntity(kUnknown, 7), nullptr);
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, entity), 1);
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, entity), 0);
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, entity), -1);
  EXPECT_EQ(sink.Calls(), 6);
  EXPECT_FALSE(registry.isTesselEntityExisted(kAudio, 8));
}

TEST(CKalTessel, TracesNothingOfAnObjectThatEndsByItsOwnRelease) {
  CKalTessel registry;
  void* const entity = registry.createOrGetTesselEntity(kAudio, 7);
  TraceLog log;
  EXPECT_EQ(ReferencesOf(kAudio, entity).Release(), 0U);
  EXPECT_TRUE(log.Lines().empty());
}

TEST(CKalTessel, TracesCreationAndSharing) {
  TraceLog log;
  void* first = kalTesselInstant.createOrGetTesselEntity(kVideo, 7);
  void* second = kalTesselInstant.createOrGetTesselEntity(kVideo, 7);
  EXPECT_EQ(first, second);
  const auto lines = log.Lines();
  ASSERT_EQ(lines.size(), 2U);
  const std::string text =
      "CKalTessel::createOrGetTesselEntity, type=1, callId=7, pMediaStatInfo=" + Hex(first);
  EXPECT_EQ(lines[0].text, text + ", refCnt=1" + Suffix(kalTesselInstant));
  EXPECT_EQ(lines[1].text, text + ", refCnt=2" + Suffix(kalTesselInstant));
  for (const auto& line : lines) {
    EXPECT_EQ(line.level, 2);
    EXPECT_EQ(line.module, "UTIL");
  }
  log.Clear();
  releaseTesselEntity(kVideo, 7, first);
  releaseTesselEntity(kVideo, 7, first);
}

TEST(CKalTessel, TracesAnUnknownTypeSigned) {
  CKalTessel registry;
  TraceLog log;
  registry.createOrGetTesselEntity(static_cast<KalTesselEntityType>(-2), 0xFFFFFFFF);
  registry.createOrGetTesselEntity(kUnknown, 7);
  const auto lines = log.Lines();
  ASSERT_EQ(lines.size(), 2U);
  const std::string text = "CKalTessel::createOrGetTesselEntity failed, type=";
  EXPECT_EQ(lines[0].text, text + "-2, callId=4294967295" + Suffix(registry));
  EXPECT_EQ(lines[1].text, text + "4, callId=7" + Suffix(registry));
}

TEST(CKalTessel, TracesReleases) {
  CKalTessel registry;
  void* entity = registry.createOrGetTesselEntity(kContentAudio, 0xFFFFFFFE);
  registry.createOrGetTesselEntity(kContentAudio, 0xFFFFFFFE);
  int token = 0;
  TraceLog log;
  registry.releaseTesselEntity(kContentAudio, 0xFFFFFFFE, &token);
  registry.releaseTesselEntity(kContentAudio, 0xFFFFFFFE, entity);
  registry.releaseTesselEntity(kContentAudio, 0xFFFFFFFE, &token);
  const auto lines = log.Lines();
  ASSERT_EQ(lines.size(), 3U);
  const std::string head = "CKalTessel::releaseTesselEntity, type=3, callId=4294967294, ";
  const std::string stored = "out_PMediaStatInfo=" + std::to_string(reinterpret_cast<std::uintptr_t>(entity));
  EXPECT_EQ(lines[0].text,
            head + "in_PMediaStatInfo=" + Hex(&token) + stored + ", refCnt=1" + Suffix(registry));
  EXPECT_EQ(lines[1].text,
            head + "in_PMediaStatInfo=" + Hex(entity) + stored + ", refCnt=0" + Suffix(registry));
  EXPECT_EQ(lines[2].text,
            head + "inPMediaStatInfo=" + Hex(&token) + ", refCnt=4294967295" + Suffix(registry));
}

TEST(CKalTessel, TracesTheCallingThreadsJobFirst) {
  CKalTessel registry;
  TraceLog log;
  cm_set_current_threadpool_job(12, "stats");
  registry.createOrGetTesselEntity(kUnknown, 7);
  cm_set_current_threadpool_job(0, nullptr);
  ASSERT_EQ(log.Lines().size(), 1U);
  EXPECT_EQ(log.Lines()[0].text,
            "[JobId=12] [Job=stats] CKalTessel::createOrGetTesselEntity failed, type=4, callId=7" +
                Suffix(registry));
}

TEST(CKalTessel, TracesNothingOfNullPointers) {
  TraceLog log;
  EXPECT_EQ(createTesselEntity(kVideo, 7, nullptr), kResultNotFound);
  EXPECT_EQ(releaseTesselEntity(kVideo, 7, nullptr), -1);
  EXPECT_EQ(kalTesselInstant.releaseTesselEntity(kVideo, 7, nullptr), -1);
  EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(kVideo, 7));
  EXPECT_TRUE(log.Lines().empty());
}

TEST(CKalTessel, TracesNothingBelowTheInformationLevel) {
  TraceLog log(1);
  CKalTessel registry;
  void* entity = registry.createOrGetTesselEntity(kVideo, 7);
  registry.createOrGetTesselEntity(kUnknown, 7);
  EXPECT_EQ(registry.releaseTesselEntity(kVideo, 7, entity), 0);
  EXPECT_EQ(registry.releaseTesselEntity(kVideo, 7, entity), -1);
  EXPECT_TRUE(log.Lines().empty());
}

// Fails the first, the second ... allocation of a request until one succeeds: what failed is never
// registered, and the lock is free again.
TEST(CKalTessel, RegistersNothingWhenMemoryRunsOut) {
  CKalTessel registry;
  std::size_t failures = 0;
  void* entity = nullptr;
  while (entity == nullptr) {
    try {
      const FailAllocation nth(failures + 1);
      entity = registry.createOrGetTesselEntity(kAudio, 7);
    } catch (const std::bad_alloc&) {
      ++failures;
      EXPECT_FALSE(registry.isTesselEntityExisted(kAudio, 7));
    }
  }
  EXPECT_EQ(failures, 2U) << "the object, and its entry";
  EXPECT_EQ(registry.releaseTesselEntity(kAudio, 7, entity), 0);
}

TEST(CKalTessel, AllocatesNothingForAPresentKey) {
  void* entity = kalTesselInstant.createOrGetTesselEntity(kAudio, 7);
  const AllocationCount allocations;
  void* again = kalTesselInstant.createOrGetTesselEntity(kAudio, 7);
  const int left = kalTesselInstant.releaseTesselEntity(kAudio, 7, entity);
  EXPECT_EQ(allocations.Count(), 0U);
  EXPECT_EQ(again, entity);
  EXPECT_EQ(left, 1);
  EXPECT_EQ(kalTesselInstant.releaseTesselEntity(kAudio, 7, entity), 0);
}

TEST(CKalTessel, LeavesTheObjectsToTheirHoldersWhenItEnds) {
  void* entity = nullptr;
  {
    CKalTessel registry;
    entity = registry.createOrGetTesselEntity(kAudio, 7);
  }
  auto* info = static_cast<KalAudioStatisticInfo*>(static_cast<kalStore::IKalAudioInfo*>(entity));
  EXPECT_EQ(info->GetReference(), 1U);
  EXPECT_EQ(info->GetCallId(), 7U);
  EXPECT_EQ(info->Release(), 0U);
}

TEST(CKalTessel, LeavesNoTraceOfItselfInTheObjectsThatOutliveIt) {
  alignas(CKalTessel) unsigned char storage[sizeof(CKalTessel)];
  auto* const registry = new (storage) CKalTessel;
  void* const entity = registry->createOrGetTesselEntity(kVideo, 7);
  registry->~CKalTessel();
  std::fill(std::begin(storage), std::end(storage), static_cast<unsigned char>(0xA5));
  EXPECT_EQ(ReferencesOf(kVideo, entity).Release(), 0U);
  for (const unsigned char byte : storage) EXPECT_EQ(byte, 0xA5);
}

}  // namespace
