// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalVideoStatisticInfo.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "statistics/Bytes.h"
#include "support/AllocationCount.h"
#include "tessel/KalContentVideoStatisticInfo.h"

namespace {

constexpr unsigned long kOther5 = std::numeric_limits<unsigned long>::max() - 5;
constexpr auto kCodec3 = static_cast<kal::KalVideoCodecType>(3);

VideoBytes Read(KalVideoStatisticInfo& info, bool reset = false) {
  VideoBytes bytes = VideoBytes::Pattern(9);
  EXPECT_EQ(info.GetTxMediaInfo(bytes.data(), reset), 0);
  return bytes;
}

void Fill(KalVideoStatisticInfo& info, VideoBytes bytes) {
  ASSERT_EQ(info.UpdateTxMediaInfo(bytes.data()), 0);
}

struct Row {
  const char* name;
  void (*set)(KalVideoStatisticInfo&);
  void (*expect)(VideoBytes&);
};

// One row for each setter of members outside the layers: what it writes, where.
const Row kRows[] = {
    {"UpdateEncodeParam", [](auto& info) { info.UpdateEncodeParam(-3, kCodec3); },
     [](auto& bytes) { bytes.template Put<std::int32_t>(1440, -3).template Put<std::uint32_t>(1616, 104); }},
    {"UpdateStreamsInfo, negative count", [](auto& info) { info.UpdateStreamsInfo(nullptr, -7); },
     [](auto& bytes) { bytes.template Put<std::int32_t>(1440, -7); }},
    {"UpdateVideoEncResolution", [](auto& info) { info.UpdateVideoEncResolution(0xFEDC9876); },
     [](auto& bytes) {
       bytes.template Put<std::uint32_t>(1444, 0x9876).template Put<std::uint32_t>(1448, 0xFEDC);
     }},
    {"UpdateVideoEncBitrateFps", [](auto& info) { info.UpdateVideoEncBitrateFps(4000000000U, 77, 29.5F); },
     [](auto& bytes) {
       bytes.template Put<float>(1452, 29.5F)
           .template Put<float>(1456, 4e9F)
           .template Put<float>(1460, 77.0F);
     }},
    {"UpdateVideoEncIdrReqNum",
     [](auto& info) { info.UpdateVideoEncIdrReqNum(0xF0000001, nullptr, 0, false); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(1464, 0xF0000001); }},
    {"UpdateVideoEncIdrSentAndReasonCnt",
     [](auto& info) { info.UpdateVideoEncIdrSentAndReasonCnt(0xF0000002, nullptr, 0); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(1468, 0xF0000002); }},
    {"UpdatePerformanceWarnCnt", [](auto& info) { info.UpdatePerformanceWarnCnt(-12); },
     [](auto& bytes) { bytes.template Put<std::int32_t>(1480, -12); }},
    {"UpdateVideoEncFrameCnt", [](auto& info) { info.UpdateVideoEncFrameCnt(0xF0000003); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(1488, 0xF0000003); }},
    {"UpdateOneVideoLayerInfo, null streams",
     [](auto& info) { info.UpdateOneVideoLayerInfo(nullptr, 2, false, 0xF0000004); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(1488, 0xF0000004); }},
    {"UpdateVideoEnableHWEnc, on", [](auto& info) { info.UpdateVideoEnableHWEnc(true); },
     [](auto& bytes) { bytes[1500] = 1; }},
    {"UpdateVideoEnableHWEnc, off", [](auto& info) { info.UpdateVideoEnableHWEnc(false); },
     [](auto& bytes) { bytes[1500] = 0; }},
    {"UpdateVideoEncOtherInfo",
     [](auto& info) {
       info.UpdateVideoEncOtherInfo(1.5F, 2.5F, 0xF0000005, kCodec3, kOther5, -6, 0xF0000007);
     },
     [](auto& bytes) {
       bytes.template Put<float>(1528, 1.5F)
           .template Put<float>(1520, 2.5F)
           .template Put<std::uint32_t>(1476, 0xF0000005);
       bytes.template Put<std::uint32_t>(1616, 104).template Put<std::uint64_t>(1600, kOther5);
       bytes.template Put<std::int32_t>(1580, -6).template Put<std::uint32_t>(1736, 0xF0000007);
     }},
    {"UpdateVideoCapturedFrameCnt", [](auto& info) { info.UpdateVideoCapturedFrameCnt(0xFFFFFFFF); },
     [](auto& bytes) { bytes.template Put<std::uint64_t>(1536, 0xFFFFFFFF); }},
    {"UpdateVideoFeedToEncoderFramesCnt",
     [](auto& info) { info.UpdateVideoFeedToEncoderFramesCnt(0xFFFFFFFE); },
     [](auto& bytes) { bytes.template Put<std::uint64_t>(1568, 0xFFFFFFFE); }},
    {"UpdateVideoEncFSAndDownType",
     [](auto& info) {
       info.UpdateVideoEncFSAndDownType(0xF0000008, 0xF0000009,
                                        static_cast<kal::KalVideoResDownType>(0x12345678));
     },
     [](auto& bytes) {
       bytes.template Put<std::uint32_t>(1584, 0xF0000008).template Put<std::uint32_t>(1588, 0xF0000009);
       bytes.template Put<std::uint32_t>(1592, 0x12345678);
     }},
    {"UpdateEncROIAreaRation", [](auto& info) { info.UpdateEncROIAreaRation(0xF000000A); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(1732, 0xF000000A); }},
    {"UpdateNoiseLevel", [](auto& info) { info.UpdateNoiseLevel(INT32_MAX); },
     [](auto& bytes) { bytes.template Put<std::int32_t>(1752, INT32_MAX); }},
    {"UpdateNoiseLevel, lower", [](auto& info) { info.UpdateNoiseLevel(INT32_MIN); }, [](auto&) {}},
    {"UpdateVideoProcessInfo", [](auto& info) { info.UpdateVideoProcessInfo(-11, -12); },
     [](auto& bytes) { bytes.template Put<std::int32_t>(1952, -11).template Put<std::int32_t>(1960, -12); }},
    {"UpdateAV1Metrics",
     [](auto& info) {
       info.UpdateAV1Metrics(-13, "0123456789abcdefgh",
                             "0123456789012345678901234567890123456789012345678901234567890123456789");
     },
     [](auto& bytes) {
       bytes.template Put<std::int32_t>(1980, -13);
       for (std::size_t i = 0; i < 15; ++i)
         bytes[1984 + i] = static_cast<unsigned char>("0123456789abcde"[i]);
       for (std::size_t i = 0; i < 63; ++i)
         bytes[2000 + i] = static_cast<unsigned char>("0123456789"[i % 10]);
       bytes[1999] = bytes[2063] = 0;
     }},
};

TEST(KalVideoStatisticInfo, WritesEachMemberAtItsPlaceAndNothingElse) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    KalVideoStatisticInfo info(5);
    VideoBytes expected = VideoBytes::Pattern();
    Fill(info, expected);
    row.set(info);
    row.expect(expected);
    EXPECT_TRUE(Same(Read(info), expected));
    EXPECT_EQ(info.GetCallId(), 5U);
  }
}

TEST(KalVideoStatisticInfo, AllocatesNothingToBeWrittenAndRead) {
  KalVideoStatisticInfo info(5);
  VideoBytes buffer{};
  const AllocationCount allocations;
  for (const Row& row : kRows) {
    row.set(info);
    EXPECT_EQ(allocations.Count(), 0U) << row.name;
  }
  info.GetTxMediaInfo(buffer.data(), false);
  info.GetTxMediaInfo(buffer.data(), true);
  EXPECT_EQ(allocations.Count(), 0U);
}

TEST(KalVideoStatisticInfo, StartsEmptyWithItsCallIdAndNoNoise) {
  KalVideoStatisticInfo info(42);
  EXPECT_EQ(info.GetCallId(), 42U);
  EXPECT_EQ(info.GetReference(), 0U);
  VideoBytes expected{};
  EXPECT_TRUE(Same(Read(info), expected.Put<std::int32_t>(1752, -1)));
}

TEST(KalVideoStatisticInfo, StartsAnewOnReset) {
  KalVideoStatisticInfo info(1);
  Fill(info, VideoBytes::Pattern());
  info.reset(0xFFFFFFFE);
  EXPECT_EQ(info.GetCallId(), 0xFFFFFFFE);
  VideoBytes expected{};
  EXPECT_TRUE(Same(Read(info), expected.Put<std::int32_t>(1752, -1)));
}

// A class that a component derives may use the block of received video.
class WithReceived : public KalVideoStatisticInfo {
 public:
  using KalVideoStatisticInfo::KalVideoStatisticInfo;
  using KalVideoStatisticInfo::m_rxBlock;
};

TEST(KalVideoStatisticInfo, StartsTheReceivedBlockAnewOnResetAlone) {
  WithReceived info(1);
  info.m_rxBlock.encodedWidth = 640;
  info.resetTxVideoStatisticInfo();
  EXPECT_EQ(info.m_rxBlock.encodedWidth, 640U);
  info.reset(1);
  EXPECT_EQ(info.m_rxBlock.encodedWidth, 0U);
}

TEST(KalVideoStatisticInfo, KeepsTheCallIdWhenOnlyTheSentStatisticsAreReset) {
  KalVideoStatisticInfo info(77);
  Fill(info, VideoBytes::Pattern());
  info.resetTxVideoStatisticInfo();
  EXPECT_EQ(info.GetCallId(), 77U);
  EXPECT_TRUE(Same(Read(info), VideoBytes{}));
}

TEST(KalVideoStatisticInfo, TakesAndGivesWholeBlocks) {
  KalVideoStatisticInfo info(1);
  Fill(info, VideoBytes::Pattern(3));
  EXPECT_TRUE(Same(Read(info), VideoBytes::Pattern(3)));
  EXPECT_TRUE(Same(Read(info), VideoBytes::Pattern(3))) << "a read without reset changes nothing";
}

TEST(KalVideoStatisticInfo, WritesNothingBesideTheCallersBuffer) {
  KalVideoStatisticInfo info(1);
  Fill(info, VideoBytes::Pattern(3).Put<std::int32_t>(1440, 1000));
  for (const bool reset : {false, true}) {
    Bytes<2064 + 16> buffer = Bytes<2064 + 16>::Pattern(7);
    EXPECT_EQ(info.GetTxMediaInfo(buffer.data() + 7, reset), 0);  // A buffer of any alignment.
    const auto before = Bytes<2064 + 16>::Pattern(7);
    for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(buffer[i], before[i]);
    for (std::size_t i = 2064 + 7; i < buffer.size(); ++i) EXPECT_EQ(buffer[i], before[i]);
  }
}

TEST(KalVideoStatisticInfo, RefusesANullBuffer) {
  KalVideoStatisticInfo info(1);
  Fill(info, VideoBytes::Pattern());
  EXPECT_EQ(info.UpdateTxMediaInfo(nullptr), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetTxMediaInfo(nullptr, false), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetTxMediaInfo(nullptr, true), kalStore::kResultNotFound);
  EXPECT_TRUE(Same(Read(info), VideoBytes::Pattern())) << "a refused read resets nothing";
}

TEST(KalVideoStatisticInfo, HasNoReceivedStatistics) {
  KalVideoStatisticInfo info(1);
  Fill(info, VideoBytes::Pattern());
  VideoBytes buffer = VideoBytes::Pattern(4);
  EXPECT_EQ(info.UpdateRxMediaInfo(buffer.data()), kalStore::kResultNotFound);
  EXPECT_EQ(info.UpdateRxMediaInfo(nullptr), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetRxMediaInfo(buffer.data(), false), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetRxMediaInfo(buffer.data(), true), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetRxMediaInfo(nullptr, true), kalStore::kResultNotFound);
  EXPECT_TRUE(Same(buffer, VideoBytes::Pattern(4)));
  EXPECT_TRUE(Same(Read(info), VideoBytes::Pattern()));
}

TEST(KalVideoStatisticInfo, KeepsTheGreatestNoiseLevelOfTheInterval) {
  KalVideoStatisticInfo info(1);
  const auto level = [&] { return Read(info).Take<std::int32_t>(1752); };
  info.UpdateNoiseLevel(-5);
  EXPECT_EQ(level(), -1);
  info.UpdateNoiseLevel(3);
  EXPECT_EQ(level(), 3);
  info.UpdateNoiseLevel(2);
  EXPECT_EQ(level(), 3);
  EXPECT_EQ(Read(info, true).Take<std::int32_t>(1752), 3) << "the reset comes after the report";
  EXPECT_EQ(level(), -1);
  info.UpdateNoiseLevel(0);
  EXPECT_EQ(level(), 0);
}

TEST(KalVideoStatisticInfo, TakesAV1NamesOfAnyLength) {
  const struct {
    const char* name1;
    const char* name2;
    std::string stored1;
    std::string stored2;
  } rows[] = {
      {nullptr, nullptr, "", ""},
      {"", "", "", ""},
      {"svt", nullptr, "svt", ""},
      {nullptr, "main", "", "main"},
      {"123456789012345", "x", "123456789012345", "x"},
      {"1234567890123456", "y", "123456789012345", "y"},
  };
  KalVideoStatisticInfo info(1);
  for (const auto& row : rows) {
    Fill(info, VideoBytes::Pattern());
    info.UpdateAV1Metrics(1, row.name1, row.name2);
    const VideoBytes bytes = Read(info);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 1984), row.stored1.c_str());
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 2000), row.stored2.c_str());
  }
}

// Only the name's first 15 (63) characters may be looked at: it need not be terminated.
TEST(KalVideoStatisticInfo, ReadsNoFurtherThanAV1NamesMayBe) {
  KalVideoStatisticInfo info(1);
  const std::vector<char> name1(15, 'a');
  const std::vector<char> name2(63, 'b');
  info.UpdateAV1Metrics(1, name1.data(), name2.data());
  const VideoBytes bytes = Read(info);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data() + 1984)), std::string(15, 'a'));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data() + 2000)), std::string(63, 'b'));
}

TEST(KalVideoStatisticInfo, IsTheSameForSharedContentButForItsClass) {
  KalContentVideoStatisticInfo content(9);
  EXPECT_EQ(content.GetCallId(), 9U);
  content.UpdateVideoEncFrameCnt(12);
  EXPECT_EQ(Read(content).Take<std::uint32_t>(1488), 12U);
  KalVideoStatisticInfo& video = content;
  EXPECT_NE(dynamic_cast<kalStore::KalContentVideoStatisticInfo*>(&video), nullptr);
  KalVideoStatisticInfo plain(9);
  kalStore::IKalMediaInfo& media = plain;
  EXPECT_EQ(dynamic_cast<KalContentVideoStatisticInfo*>(&media), nullptr);
  EXPECT_EQ(sizeof(KalContentVideoStatisticInfo), sizeof(kalStore::KalVideoStatisticInfo));
}

}  // namespace
