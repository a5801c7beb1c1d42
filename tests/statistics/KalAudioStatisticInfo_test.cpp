// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalAudioStatisticInfo.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "statistics/Bytes.h"
#include "support/AllocationCount.h"
#include "tessel/KalContentAudioStatisticInfo.h"

namespace {

constexpr std::int32_t kNoStreams[] = {-1, 20, 21, INT32_MAX, INT32_MIN};

AudioBytes ReadTx(KalAudioStatisticInfo& info, bool reset = false) {
  AudioBytes bytes = AudioBytes::Pattern(9);
  EXPECT_EQ(info.GetTxMediaInfo(bytes.data(), reset), 0);
  return bytes;
}

AudioBytes ReadRx(KalAudioStatisticInfo& info, std::int32_t stream, bool reset = false) {
  AudioBytes bytes = AudioBytes::Pattern(9);
  EXPECT_EQ(info.GetRxAudioInfo(bytes.data(), stream, reset), 0);
  return bytes;
}

SyncBytes ReadSync(KalAudioStatisticInfo& info, std::int32_t stream) {
  SyncBytes bytes = SyncBytes::Pattern(9);
  EXPECT_EQ(info.GetAVSyncInfo(bytes.data(), stream), 0);
  return bytes;
}

void Fill(KalAudioStatisticInfo& info, AudioBytes bytes) {
  ASSERT_EQ(info.UpdateTxMediaInfo(bytes.data()), 0);
}

template <class Record, std::size_t size>
Record Decode(const Bytes<size>& bytes) {
  static_assert(sizeof(Record) == size);
  Record record;
  std::memcpy(&record, bytes.data(), size);
  return record;
}

AudioBytes& PutTriple(AudioBytes& bytes, std::size_t at, float first, float second, float third) {
  return bytes.Put(at, first).Put(at + 4, second).Put(at + 8, third);
}

const auto kCodec = Bytes<32>::Pattern(2).Put<std::int32_t>(8, 18);
const auto kJitter = Bytes<56>::Pattern(3);

struct TxRow {
  const char* name;
  void (*set)(KalAudioStatisticInfo&);
  void (*expect)(AudioBytes&);
};

const TxRow kTxRows[] = {
    {"updateSendCodecInfo",
     [](auto& info) {
       auto codec = Decode<kalStore::st_KalAudioCodecStatisticsInfo>(kCodec);
       info.updateSendCodecInfo(codec);
     },
     [](auto& bytes) {
       bytes.Copy(0, kCodec.data(), 8).template Put<std::uint32_t>(12, 7).Copy(56, kCodec.data() + 12, 4);
       bytes.PutHalves(96, kCodec.Take<std::uint64_t>(16)).PutHalves(104, kCodec.Take<std::uint64_t>(24));
     }},
    {"updateCodecStaticsLBRRflag, on", [](auto& info) { info.updateCodecStaticsLBRRflag(true); },
     [](auto& bytes) { bytes[0] = 1; }},
    {"updateCodecStaticsLBRRflag, off", [](auto& info) { info.updateCodecStaticsLBRRflag(false); },
     [](auto& bytes) { bytes[0] = 0; }},
    {"updateTxBitRate", [](auto& info) { info.updateTxBitRate(0xF0000001); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(8, 0xF0000001); }},
    {"updateTxEncodeDropFrameinMS", [](auto& info) { info.updateTxEncodeDropFrameinMS(0xF0000002); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(56, 0xF0000002); }},
    {"updateNoiseLevel", [](auto& info) { info.updateNoiseLevel(1.5F, 2.5F, 3.5F); },
     [](auto& bytes) { PutTriple(bytes, 60, 1.5F, 2.5F, 3.5F); }},
    {"updateAECLevel", [](auto& info) { info.updateAECLevel(4.5F, 5.5F, 6.5F); },
     [](auto& bytes) { PutTriple(bytes, 72, 4.5F, 5.5F, 6.5F); }},
    {"updateSpeechLevel", [](auto& info) { info.updateSpeechLevel(7.5F, 8.5F, 9.5F); },
     [](auto& bytes) { PutTriple(bytes, 84, 7.5F, 8.5F, 9.5F); }},
    {"updateUnstableEventCount", [](auto& info) { info.updateUnstableEventCount(0xF0000003); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(116, 0xF0000003); }},
};

TEST(KalAudioStatisticInfo, WritesEachSentMemberAtItsPlaceAndNothingElse) {
  for (const TxRow& row : kTxRows) {
    SCOPED_TRACE(row.name);
    KalAudioStatisticInfo info(5);
    AudioBytes expected = AudioBytes::Pattern();
    Fill(info, expected);
    row.set(info);
    row.expect(expected);
    EXPECT_TRUE(Same(ReadTx(info), expected));
    for (std::int32_t stream = 0; stream < 20; ++stream) {
      EXPECT_TRUE(Same(ReadRx(info, stream), AudioBytes{}));
      EXPECT_TRUE(Same(ReadSync(info, stream), SyncBytes{}));
    }
    EXPECT_EQ(info.GetCallId(), 5U);
  }
}

struct RxRow {
  const char* name;
  void (*set)(KalAudioStatisticInfo&, std::int32_t stream);
  void (*expect)(AudioBytes&);
};

const RxRow kRxRows[] = {
    {"updateCodecStaticsLBRRflag, on",
     [](auto& info, auto stream) { info.updateCodecStaticsLBRRflag(stream, true); },
     [](auto& bytes) { bytes[0] = 1; }},
    {"updateCodecStaticsLBRRflag, off",
     [](auto& info, auto stream) { info.updateCodecStaticsLBRRflag(stream, false); },
     [](auto& bytes) { bytes[0] = 0; }},
    {"updateDecodeInfo", [](auto& info, auto stream) { info.updateDecodeInfo(stream, true, 0xF0000004); },
     [](auto& bytes) {
       bytes[0] = 1;
       bytes.template Put<std::uint32_t>(4, 0xF0000004);
     }},
    {"updateRxBitRate", [](auto& info, auto stream) { info.updateRxBitRate(stream, 0xF0000005); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(8, 0xF0000005); }},
    {"updatePayloadType",
     [](auto& info, auto stream) { info.updatePayloadType(stream, kalStore::KAL_AUDIO_PAYLOAD_DYNAMIC_107); },
     [](auto& bytes) { bytes.template Put<std::uint32_t>(12, 12); }},
    {"updateJitterBufferStatistics",
     [](auto& info, auto stream) {
       auto jitter = Decode<kalStore::st_KalAudioJitterBufferStatistics>(kJitter);
       info.updateJitterBufferStatistics(stream, jitter, 0x1F2, -2);
     },
     [](auto& bytes) {
       bytes[108] = 0xF2;
       bytes[109] = 0xFE;
       bytes.Copy(112, kJitter.data() + 36, 4)
           .Copy(120, kJitter.data() + 12, 4)
           .Copy(124, kJitter.data() + 8, 4);
       bytes.Copy(128, kJitter.data() + 16, 4)
           .PutHalves(132, kJitter.Take<std::uint64_t>(40))
           .Copy(140, kJitter.data() + 48, 4);
     }},
    {"updateE2EDelayInfo",
     [](auto& info, auto stream) { info.updateE2EDelayInfo(stream, 0xF0000006, 0xF0000007, 0xF0000008); },
     [](auto& bytes) {
       bytes.template Put<std::uint32_t>(196, 0xF0000006).template Put<std::uint32_t>(200, 0xF0000007);
       bytes.template Put<std::uint32_t>(204, 0xF0000008);
     }},
};

TEST(KalAudioStatisticInfo, WritesEachReceivedMemberAtItsPlaceInItsStream) {
  for (const RxRow& row : kRxRows) {
    for (const std::int32_t stream : {0, 7, 19}) {
      SCOPED_TRACE(row.name);
      KalAudioStatisticInfo info(5);
      Fill(info, AudioBytes::Pattern());
      for (std::int32_t other = 0; other < 20; ++other) info.updateDecodeInfo(other, true, 0x01010101);
      AudioBytes untouched{};
      untouched[0] = 1;
      untouched.Put<std::uint32_t>(4, 0x01010101);
      AudioBytes expected = untouched;
      row.set(info, stream);
      row.expect(expected);
      for (std::int32_t other = 0; other < 20; ++other) {
        EXPECT_TRUE(Same(ReadRx(info, other), other == stream ? expected : untouched)) << other;
        EXPECT_TRUE(Same(ReadSync(info, other), SyncBytes{}));
      }
      EXPECT_TRUE(Same(ReadTx(info), AudioBytes::Pattern()));
    }
  }
}

TEST(KalAudioStatisticInfo, IgnoresStreamsThatDoNotExist) {
  KalAudioStatisticInfo info(5);
  Fill(info, AudioBytes::Pattern());
  auto sync = Decode<kal::_tagSyncStatistics>(SyncBytes::Pattern());
  for (const std::int32_t stream : kNoStreams) {
    for (const RxRow& row : kRxRows) row.set(info, stream);
    info.updateAVSyncStatistics(stream, sync);
  }
  for (std::int32_t stream = 0; stream < 20; ++stream) {
    EXPECT_TRUE(Same(ReadRx(info, stream), AudioBytes{}));
    EXPECT_TRUE(Same(ReadSync(info, stream), SyncBytes{}));
  }
  EXPECT_TRUE(Same(ReadTx(info), AudioBytes::Pattern()));
}

TEST(KalAudioStatisticInfo, KeepsTheSyncRecordsOfEachStream) {
  for (const std::int32_t stream : {0, 11, 19}) {
    KalAudioStatisticInfo info(5);
    auto sync = Decode<kal::_tagSyncStatistics>(SyncBytes::Pattern(6));
    info.updateAVSyncStatistics(stream, sync);
    for (std::int32_t other = 0; other < 20; ++other) {
      EXPECT_TRUE(Same(ReadSync(info, other), other == stream ? SyncBytes::Pattern(6) : SyncBytes{}))
          << other;
      EXPECT_TRUE(Same(ReadRx(info, other), AudioBytes{}));
    }
  }
}

TEST(KalAudioStatisticInfo, RefusesReadsWithoutABufferOrStream) {
  KalAudioStatisticInfo info(5);
  AudioBytes buffer = AudioBytes::Pattern(8);
  for (const std::int32_t stream : kNoStreams) {
    EXPECT_EQ(info.GetRxAudioInfo(buffer.data(), stream, true), kalStore::kResultNotFound);
    EXPECT_EQ(info.GetAVSyncInfo(buffer.data(), stream), kalStore::kResultNotFound);
  }
  EXPECT_TRUE(Same(buffer, AudioBytes::Pattern(8)));
  Fill(info, AudioBytes::Pattern());
  EXPECT_EQ(info.GetRxAudioInfo(nullptr, 0, false), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetAVSyncInfo(nullptr, 0), kalStore::kResultNotFound);
  EXPECT_EQ(info.UpdateTxMediaInfo(nullptr), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetTxMediaInfo(nullptr, true), kalStore::kResultNotFound);
  EXPECT_TRUE(Same(ReadTx(info), AudioBytes::Pattern())) << "a refused read resets nothing";
}

TEST(KalAudioStatisticInfo, TakesNoWholeReceiveBlock) {
  KalAudioStatisticInfo info(5);
  Fill(info, AudioBytes::Pattern());
  AudioBytes buffer = AudioBytes::Pattern(8);
  EXPECT_EQ(info.UpdateRxMediaInfo(buffer.data()), kalStore::kResultNotFound);
  EXPECT_EQ(info.UpdateRxMediaInfo(nullptr), kalStore::kResultNotFound);
  EXPECT_EQ(info.GetRxMediaInfo(buffer.data(), true), 0);
  EXPECT_EQ(info.GetRxMediaInfo(nullptr, false), 0);
  EXPECT_TRUE(Same(buffer, AudioBytes::Pattern(8)));
  EXPECT_TRUE(Same(ReadTx(info), AudioBytes::Pattern()));
  EXPECT_TRUE(Same(ReadRx(info, 0), AudioBytes{}));
}

TEST(KalAudioStatisticInfo, WritesNothingBesideTheCallersBuffer) {
  KalAudioStatisticInfo info(1);
  const auto before = Bytes<280>::Pattern(7);
  const auto expectOnly = [&](const Bytes<280>& buffer, std::size_t size) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(buffer[i], before[i]);
    for (std::size_t i = 3 + size; i < 280; ++i) EXPECT_EQ(buffer[i], before[i]) << i;
  };
  auto buffer = before;
  EXPECT_EQ(info.GetTxMediaInfo(buffer.data() + 3, true), 0);
  expectOnly(buffer, 260);
  buffer = before;
  EXPECT_EQ(info.GetRxAudioInfo(buffer.data() + 3, 19, true), 0);
  expectOnly(buffer, 260);
  buffer = before;
  EXPECT_EQ(info.GetAVSyncInfo(buffer.data() + 3, 19), 0);
  expectOnly(buffer, 120);
}

TEST(KalAudioStatisticInfo, BeginsANewIntervalAfterAResettingRead) {
  KalAudioStatisticInfo info(5);
  AudioBytes expected = AudioBytes::Pattern();
  Fill(info, expected);
  EXPECT_TRUE(Same(ReadTx(info, true), expected)) << "the reset comes after the report";
  PutTriple(expected, 60, -100, -100, -100);
  PutTriple(expected, 84, -100, -100, -100);
  expected.Put(76, 0.0F).Put(80, 0.0F).Put<std::uint32_t>(112, 20);
  EXPECT_TRUE(Same(ReadTx(info, true), expected));
  EXPECT_TRUE(Same(ReadTx(info), expected));
}

TEST(KalAudioStatisticInfo, ZeroesOneStreamsIntervalAfterAResettingRead) {
  KalAudioStatisticInfo info(5);
  auto jitter = Decode<kalStore::st_KalAudioJitterBufferStatistics>(kJitter);
  for (const std::int32_t stream : {4, 5}) info.updateJitterBufferStatistics(stream, jitter, 1, 2);
  const AudioBytes before = ReadRx(info, 4);
  EXPECT_TRUE(Same(ReadRx(info, 4, true), before)) << "the reset comes after the report";
  AudioBytes expected = before;
  EXPECT_TRUE(Same(ReadRx(info, 4, true), expected.Zero(120, 12)));
  EXPECT_TRUE(Same(ReadRx(info, 5), before));
}

AudioBytes InitialTx() {
  AudioBytes bytes{};
  PutTriple(bytes, 60, -100, -100, -100);
  PutTriple(bytes, 84, -100, -100, -100);
  return bytes.Put<std::uint32_t>(112, 20);
}

TEST(KalAudioStatisticInfo, AllocatesNothingToBeWrittenAndRead) {
  KalAudioStatisticInfo info(5);
  AudioBytes block{};
  SyncBytes sync{};
  const AllocationCount allocations;
  for (const TxRow& row : kTxRows) {
    row.set(info);
    EXPECT_EQ(allocations.Count(), 0U) << row.name;
  }
  for (const RxRow& row : kRxRows) {
    row.set(info, 3);
    EXPECT_EQ(allocations.Count(), 0U) << row.name;
  }
  for (const bool reset : {false, true}) {
    info.GetTxMediaInfo(block.data(), reset);
    info.GetRxAudioInfo(block.data(), 3, reset);
  }
  info.GetAVSyncInfo(sync.data(), 3);
  EXPECT_EQ(allocations.Count(), 0U);
}

TEST(KalAudioStatisticInfo, StartsEmptyWithItsCallIdAndNoLevels) {
  KalAudioStatisticInfo info(42);
  EXPECT_EQ(info.GetCallId(), 42U);
  EXPECT_EQ(info.GetReference(), 0U);
  EXPECT_TRUE(Same(ReadTx(info), InitialTx()));
  for (std::int32_t stream = 0; stream < 20; ++stream) {
    EXPECT_TRUE(Same(ReadRx(info, stream), AudioBytes{}));
    EXPECT_TRUE(Same(ReadSync(info, stream), SyncBytes{}));
  }
}

TEST(KalAudioStatisticInfo, StartsAnewOnReset) {
  KalAudioStatisticInfo info(1);
  Fill(info, AudioBytes::Pattern());
  auto sync = Decode<kal::_tagSyncStatistics>(SyncBytes::Pattern());
  for (std::int32_t stream = 0; stream < 20; ++stream) {
    for (const RxRow& row : kRxRows) row.set(info, stream);
    info.updateAVSyncStatistics(stream, sync);
  }
  info.reset(0xFFFFFFFE);
  EXPECT_EQ(info.GetCallId(), 0xFFFFFFFE);
  EXPECT_TRUE(Same(ReadTx(info), InitialTx()));
  for (std::int32_t stream = 0; stream < 20; ++stream) {
    EXPECT_TRUE(Same(ReadRx(info, stream), AudioBytes{}));
    EXPECT_TRUE(Same(ReadSync(info, stream), SyncBytes{}));
  }
}

TEST(KalAudioStatisticInfo, SharesOneWordBetweenTheDropTimeAndTheCodec) {
  KalAudioStatisticInfo info(1);
  auto codec = Decode<kalStore::st_KalAudioCodecStatisticsInfo>(kCodec);
  info.updateTxEncodeDropFrameinMS(5);
  info.updateSendCodecInfo(codec);
  EXPECT_EQ(ReadTx(info).Take<std::uint32_t>(56), codec.encodeDropMs);
  info.updateTxEncodeDropFrameinMS(6);
  EXPECT_EQ(ReadTx(info).Take<std::uint32_t>(56), 6U);
}

TEST(KalAudioStatisticInfo, ReadsBackByNameWhatWasWritten) {
  KalAudioStatisticInfo info(1);
  kalStore::st_KalAudioCodecStatisticsInfo codec{};
  codec.stat24 = 0xFEDCBA9876543210;
  info.updateSendCodecInfo(codec);
  info.updateCodecStaticsLBRRflag(true);
  kalStore::st_KalAudioBlock block;
  info.GetTxMediaInfo(&block, false);
  EXPECT_EQ(block.codecStat24.Value(), 0xFEDCBA9876543210);
  EXPECT_EQ(block.lbrrFlag, 1);
  EXPECT_EQ(block.noiseLevel[2], -100.0F);
}

TEST(KalAudioStatisticInfo, IsTheSameForSharedContentButForItsClass) {
  KalContentAudioStatisticInfo content(9);
  EXPECT_EQ(content.GetCallId(), 9U);
  content.updateRxBitRate(19, 12);
  EXPECT_EQ(ReadRx(content, 19).Take<std::uint32_t>(8), 12U);
  KalAudioStatisticInfo& audio = content;
  EXPECT_NE(dynamic_cast<kalStore::KalContentAudioStatisticInfo*>(&audio), nullptr);
  KalAudioStatisticInfo plain(9);
  kalStore::IKalMediaInfo& media = plain;
  EXPECT_EQ(dynamic_cast<KalContentAudioStatisticInfo*>(&media), nullptr);
  EXPECT_EQ(sizeof(KalContentAudioStatisticInfo), sizeof(kalStore::KalAudioStatisticInfo));
}

}  // namespace
