// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>

#include "tessel/KalAudioStatisticInfo.h"
#include "tessel/KalStatisticsTypes.h"

namespace {

TEST(KalCodec, MapsTheVideoCodecTypes) {
  const struct {
    std::int32_t type;
    std::uint32_t code;
  } rows[] = {{0, 100}, {1, 101},       {2, 0},         {3, 104}, {4, 0},
              {100, 0}, {INT32_MAX, 0}, {INT32_MIN, 0}, {-1, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(kalStore::mapToKALCodec(static_cast<kal::KalVideoCodecType>(row.type)), row.code) << row.type;
  }
}

TEST(KalCodec, IsReachableWithoutItsNamespace) {
  EXPECT_EQ(::mapToKALCodec(kal::KAL_VIDEO_CODEC_CODE_101), 101U);
}

// Codec 777: left unchanged.
TEST(KalCodec, MapsTheAudioPayloadTypesAndLeavesTheRestUnchanged) {
  const struct {
    std::int32_t payloadType;
    std::uint32_t code;
  } rows[] = {{0, 1},     {8, 2},    {9, 5},     {18, 7},          {101, 4},        {102, 3},
              {103, 8},   {104, 9},  {105, 10},  {106, 11},        {107, 12},       {1, 777},
              {7, 777},   {10, 777}, {17, 777},  {19, 777},        {100, 777},      {108, 777},
              {110, 777}, {-1, 777}, {256, 777}, {INT32_MAX, 777}, {INT32_MIN, 777}};
  for (const auto& row : rows) {
    const auto payloadType = static_cast<kalStore::KAL_AUDIO_PAYLOAD_TYPE>(row.payloadType);
    KalAudioStatisticInfo info(1);
    kalStore::st_KalAudioBlock block{};
    block.codecCode = 777;
    info.UpdateTxMediaInfo(&block);
    kalStore::st_KalAudioCodecStatisticsInfo codec{};
    codec.payloadType = payloadType;
    info.updateSendCodecInfo(codec);
    info.GetTxMediaInfo(&block, false);
    EXPECT_EQ(block.codecCode, row.code) << "sent, " << row.payloadType;

    info.updatePayloadType(3, kalStore::KAL_AUDIO_PAYLOAD_G729);
    info.updatePayloadType(3, payloadType);
    info.GetRxAudioInfo(&block, 3, false);
    EXPECT_EQ(block.codecCode, row.code == 777 ? 7 : row.code) << "received, " << row.payloadType;
  }
}

}  // namespace
