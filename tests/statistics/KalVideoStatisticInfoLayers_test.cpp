// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <vector>

#include "statistics/Bytes.h"
#include "tessel/KalVideoStatisticInfo.h"

namespace {

using kalStore::st_KalVideoStreamStatInfo;
using Stream = Bytes<400>;

// As many streams as are asked for and none beyond, so that a sanitizer sees every read past them.
class Streams {
 public:
  explicit Streams(std::size_t count, unsigned int salt = 20) : m_records(count) {
    for (std::size_t i = 0; i < count; ++i) Set(i, Stream::Pattern(salt + static_cast<unsigned int>(i)));
  }
  void Set(std::size_t i, const Stream& bytes) { std::memcpy(&m_records[i], bytes.data(), bytes.size()); }
  Stream operator[](std::size_t i) const {
    Stream bytes;
    std::memcpy(bytes.data(), &m_records[i], bytes.size());
    return bytes;
  }
  st_KalVideoStreamStatInfo* data() { return m_records.data(); }

 private:
  std::vector<st_KalVideoStreamStatInfo> m_records;
};

struct Span {
  std::size_t layer;
  std::size_t in;
  std::size_t width;
};

constexpr Span kStreamSpans[] = {{8, 8, 4},      {12, 12, 4},   {48, 80, 4},   {56, 104, 4}, {60, 108, 4},
                                 {108, 200, 16}, {124, 124, 4}, {128, 148, 4}, {192, 308, 4}};
constexpr Span kLayerSpans[] = {{0, 0, 16}, {20, 84, 4}, {24, 88, 4}, {28, 92, 4}};

class VideoLayers : public ::testing::Test {
 protected:
  VideoLayers() { Fill(VideoBytes::Pattern()); }

  void Fill(VideoBytes bytes) {
    expected = bytes;
    ASSERT_EQ(info.UpdateTxMediaInfo(bytes.data()), 0);
  }

  VideoBytes Read(bool reset = false) {
    VideoBytes bytes = VideoBytes::Pattern(9);
    EXPECT_EQ(info.GetTxMediaInfo(bytes.data(), reset), 0);
    return bytes;
  }

  void Expect(std::size_t layer, const Stream& in, Span span) {
    expected.Copy(240 * layer + span.layer, in.data() + span.in, span.width);
  }

  void ExpectStream(std::size_t layer, const Stream& in) {
    const std::size_t base = 240 * layer;
    for (const Span& span : kStreamSpans) Expect(layer, in, span);
    expected.Put(base + 40, static_cast<float>(in.Take<std::uint64_t>(56)));
    expected.Put(base + 44, static_cast<float>(in.Take<std::uint64_t>(48)));
    const auto minimum = in.Take<std::int32_t>(300);
    const auto stored = expected.Take<std::int32_t>(base + 184);
    if (minimum > 0 && (stored <= 0 || minimum < stored)) expected.Put(base + 184, minimum);
    expected.Put(base + 188, std::max(in.Take<std::int32_t>(304), expected.Take<std::int32_t>(base + 188)));
  }

  KalVideoStatisticInfo info{1};
  VideoBytes expected;
};

TEST_F(VideoLayers, TakeTheMeasuredMembersOfTheStreamsCounted) {
  for (const std::int32_t count : {1, 3, 6}) {
    Streams streams(static_cast<std::size_t>(count), 30);
    info.UpdateStreamsInfo(streams.data(), count);
    expected.Put(1440, count);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) ExpectStream(i, streams[i]);
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, StoreACountAboveSixAndTakeSixStreams) {
  for (const std::int32_t count : {7, 100, INT32_MAX}) {
    Streams streams(6);
    info.UpdateStreamsInfo(streams.data(), count);
    expected.Put(1440, count);
    for (std::size_t i = 0; i < 6; ++i) ExpectStream(i, streams[i]);
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, StoreACountBelowOneAndTakeNoStream) {
  for (const std::int32_t count : {0, -1, INT32_MIN}) {
    Streams none(0);
    info.UpdateStreamsInfo(none.data(), count);
    EXPECT_TRUE(Same(Read(), expected.Put(1440, count))) << count;
  }
  info.UpdateStreamsInfo(nullptr, 3);
  EXPECT_TRUE(Same(Read(), expected.Put(1440, 3)));
}

TEST_F(VideoLayers, ConvertLargeNumbersAsUnsigned) {
  Streams streams(1);
  streams.Set(0, Stream{}
                     .Put<std::uint64_t>(56, std::numeric_limits<std::uint64_t>::max())
                     .Put<std::uint64_t>(48, 0x8000000000000000));
  info.UpdateStreamsInfo(streams.data(), 1);
  EXPECT_EQ(Read().Take<float>(40), 18446744073709551616.0F);
  EXPECT_EQ(Read().Take<float>(44), 9223372036854775808.0F);
}

TEST_F(VideoLayers, TakeAllOfOneStream) {
  for (std::size_t layer = 0; layer < 6; ++layer) {
    Streams streams(6);
    Stream in = streams[layer];
    streams.Set(layer, in.Put<std::int32_t>(16, 1));
    info.UpdateOneVideoLayerInfo(streams.data(), static_cast<std::int32_t>(layer), false, 0xF0000000);
    for (const Span& span : kLayerSpans) Expect(layer, in, span);
    expected.Put<std::uint32_t>(240 * layer + 16, 101).Put<std::uint32_t>(1488, 0xF0000000);
    ExpectStream(layer, in);
    EXPECT_TRUE(Same(Read(), expected)) << layer;
  }
}

TEST_F(VideoLayers, MapAStreamsUnknownCodecToNone) {
  Streams streams(1);
  streams.Set(0, Stream{}.Put<std::int32_t>(16, -1));
  info.UpdateOneVideoLayerInfo(streams.data(), 0, false, 1);
  EXPECT_EQ(Read().Take<std::uint32_t>(16), 0U);
}

TEST_F(VideoLayers, StartANewIntervalWhenCleared) {
  Streams streams(6);
  info.UpdateStreamsInfo(streams.data(), 6);
  ASSERT_EQ(info.GetTxMediaInfo(expected.data(), true), 0);
  expected = Read();
  Stream in = streams[4];
  streams.Set(4, in.Put<std::int32_t>(16, 0));
  info.UpdateOneVideoLayerInfo(streams.data(), 4, true, 5);
  for (const Span& span : kLayerSpans) Expect(4, in, span);
  ExpectStream(4, in);
  expected.Put<std::uint32_t>(960 + 16, 100).Put<std::uint32_t>(1488, 5);
  expected.Zero(960 + 32, 5).Zero(960 + 184, 12);
  EXPECT_TRUE(Same(Read(), expected));

  const VideoBytes report = Read(true);
  EXPECT_EQ(report.Take<std::uint32_t>(960 + 224), in.Take<std::uint32_t>(84))
      << "nothing was reported before";
  EXPECT_EQ(report.Take<std::uint32_t>(960 + 228), in.Take<std::uint32_t>(88));
  EXPECT_EQ(report.Take<std::uint32_t>(960 + 104), expected.Take<std::uint32_t>(960 + 104));
  for (std::size_t at = 132; at < 176; at += 4) {
    EXPECT_EQ(report.Take<std::uint32_t>(960 + at), expected.Take<std::uint32_t>(960 + at)) << at;
  }
  EXPECT_EQ(report.Take<std::uint32_t>(720 + 224), 0U) << "the other layers remember";
}

TEST_F(VideoLayers, ClearALayerWithoutAStream) {
  info.UpdateOneVideoLayerInfo(nullptr, 2, true, 8);
  expected.Put<std::uint32_t>(1488, 8).Zero(480 + 32, 5).Zero(480 + 184, 12);
  EXPECT_TRUE(Same(Read(), expected));
}

TEST_F(VideoLayers, IgnoreALayerThatDoesNotExist) {
  Streams streams(6);
  float values[6] = {};
  for (const std::int32_t index : {-1, 6, 7, INT32_MAX, INT32_MIN}) {
    SCOPED_TRACE(index);
    info.UpdateOneVideoLayerInfo(streams.data(), index, true, 11);
    info.UpdateVideoEncIdrReqNum(12, streams.data(), index, false);
    info.UpdateVideoEncIdrSentAndReasonCnt(13, streams.data(), index);
    info.UpdateFBufferOcuppiedVideo(values, static_cast<std::uint32_t>(index));
    expected.Put<std::uint32_t>(1488, 11).Put<std::uint32_t>(1464, 12).Put<std::uint32_t>(1468, 13);
    EXPECT_TRUE(Same(Read(), expected));
  }
}

TEST_F(VideoLayers, IgnoreANullArray) {
  info.UpdateVideoConfigureChange(nullptr, 3);
  info.UpdateVideoEncIdrReqNum(12, nullptr, 3, true);
  info.UpdateVideoEncIdrReqNum(12, nullptr, 3, false);
  info.UpdateVideoEncIdrSentAndReasonCnt(13, nullptr, 3);
  info.UpdateProfile(nullptr, 3);
  info.UpdateEncodeControlTargetFps(nullptr, 3);
  info.UpdateFBufferOcuppiedVideo(nullptr, 3);
  EXPECT_TRUE(Same(Read(), expected.Put<std::uint32_t>(1464, 12).Put<std::uint32_t>(1468, 13)));
}

TEST_F(VideoLayers, TakeConfigurationChanges) {
  Streams streams(6);
  for (const std::int32_t count : {-1, 0, 2, 6, 7}) {
    info.UpdateVideoConfigureChange(streams.data(), count);
    for (int i = 0; i < std::min(count, 6); ++i) {
      const auto layer = static_cast<std::size_t>(i);
      Expect(layer, streams[layer], {104, 112, 4});
    }
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, TakeTheIdrRequestsOfOneLayer) {
  Streams streams(6);
  for (std::size_t i = 0; i < 6; ++i) {
    info.UpdateVideoEncIdrReqNum(50, streams.data(), static_cast<std::int32_t>(i), false);
    Expect(i, streams[i], {24, 88, 4});
    EXPECT_TRUE(Same(Read(), expected.Put<std::uint32_t>(1464, 50))) << i;
  }
}

TEST_F(VideoLayers, TakeTheIdrRequestsOfTheFirstLayers) {
  Streams streams(6);
  expected.Put<std::uint32_t>(1464, 51);
  for (const std::int32_t count : {-1, 0, 1, 4, 6, 7, INT32_MAX}) {
    info.UpdateVideoEncIdrReqNum(51, streams.data(), count, true);
    for (int i = 0; i < std::min(count, 6); ++i) {
      const auto layer = static_cast<std::size_t>(i);
      Expect(layer, streams[layer], {24, 88, 4});
    }
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, TakeTheIdrFramesSentAndTheirReasons) {
  Streams streams(6);
  for (std::size_t i = 0; i < 6; ++i) {
    info.UpdateVideoEncIdrSentAndReasonCnt(60, streams.data(), static_cast<std::int32_t>(i));
    Expect(i, streams[i], {28, 92, 4});
    Expect(i, streams[i], {132, 248, 44});
    EXPECT_TRUE(Same(Read(), expected.Put<std::uint32_t>(1468, 60))) << i;
  }
}

TEST_F(VideoLayers, TakeTheProfiles) {
  for (const std::int32_t count : {-1, 0, 2, 6, 7}) {
    std::vector<std::uint32_t> profiles(static_cast<std::size_t>(std::clamp(count, 0, 6)));
    for (std::size_t i = 0; i < profiles.size(); ++i) {
      profiles[i] = static_cast<std::uint32_t>(0xF0000000 + i + profiles.size() * 16);
      expected.Put(240 * i + 64, profiles[i]);
    }
    std::uint32_t none = 0;
    info.UpdateProfile(profiles.empty() ? &none : profiles.data(), count);
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, TakeTheTargetFrameRatesOfOneToSixLayers) {
  std::vector<float> fps = {1.5F, 2.5F, 3.5F, 4.5F, 5.5F, 6.5F};
  for (const std::int32_t count : {7, 100, 0, -1, INT32_MIN}) {
    info.UpdateEncodeControlTargetFps(fps.data(), count);
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
  for (const std::int32_t count : {1, 4, 6}) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      fps[i] += 10;
      expected.Put(240 * i + 232, fps[i]);
    }
    info.UpdateEncodeControlTargetFps(fps.data(), count);
    EXPECT_TRUE(Same(Read(), expected)) << count;
  }
}

TEST_F(VideoLayers, TakeTheBufferOccupancyFromTheLayersOwnElement) {
  float values[6] = {0.5F, 1.5F, 2.5F, 3.5F, 4.5F, 5.5F};
  for (std::uint32_t i = 0; i < 6; ++i) {
    info.UpdateFBufferOcuppiedVideo(values, i);
    EXPECT_TRUE(Same(Read(), expected.Put(240 * i + 52, values[i]))) << i;
  }
}

TEST_F(VideoLayers, KeepTheLeastPositiveAndTheGreatestValueOfTheInterval) {
  const struct {
    std::size_t layerAt;
    std::size_t inAt;
    std::int32_t stored;
    std::int32_t given;
    std::int32_t kept;
  } rows[] = {
      {184, 300, 0, 30, 30},  {184, 300, 30, 20, 20}, {184, 300, 20, 25, 20}, {184, 300, 20, 20, 20},
      {184, 300, 20, 0, 20},  {184, 300, 20, -1, 20}, {184, 300, -4, 9, 9},   {184, 300, -4, 0, -4},
      {184, 300, 0, -7, 0},   {184, 300, 1, 5, 1},    {188, 304, 0, 30, 30},  {188, 304, 30, 20, 30},
      {188, 304, 30, 31, 31}, {188, 304, -5, -3, -3}, {188, 304, 0, -3, 0},   {188, 304, -3, -5, -3},
  };
  for (const auto& row : rows) {
    for (const bool oneLayer : {false, true}) {
      Fill(VideoBytes{}.Put(720 + row.layerAt, row.stored));
      Streams streams(6);
      streams.Set(3, Stream{}.Put(row.inAt, row.given));
      if (oneLayer) {
        info.UpdateOneVideoLayerInfo(streams.data(), 3, false, 0);
      } else {
        info.UpdateStreamsInfo(streams.data(), 6);
      }
      EXPECT_EQ(Read().Take<std::int32_t>(720 + row.layerAt), row.kept)
          << row.layerAt << ": " << row.stored << ", " << row.given;
    }
  }
}

// A report: the counters stay cumulative with their growth beside them, the rest is replaced by its growth.
TEST_F(VideoLayers, ReportGrowthByAResettingRead) {
  for (const std::int32_t count : {1, 6, 9}) {
    SCOPED_TRACE(count);
    info.reset(1);
    const auto layers = static_cast<std::size_t>(std::min(count, 6));
    const VideoBytes first = VideoBytes::Pattern(1).Put(1440, count);
    Fill(first);
    for (std::size_t i = 0; i < layers; ++i) {
      expected.Put(240 * i + 224, first.Take<std::uint32_t>(240 * i + 20));
      expected.Put(240 * i + 228, first.Take<std::uint32_t>(240 * i + 24));
    }
    EXPECT_TRUE(Same(Read(true), expected)) << "all of it is new";

    const VideoBytes second = VideoBytes::Pattern(2).Put(1440, count);
    Fill(second);
    for (std::size_t i = 0; i < layers; ++i) {
      const auto growth = [&](std::size_t at) {
        return second.Take<std::uint32_t>(240 * i + at) - first.Take<std::uint32_t>(240 * i + at);
      };
      expected.Put(240 * i + 224, growth(20)).Put(240 * i + 228, growth(24)).Put(240 * i + 104, growth(104));
      for (std::size_t at = 132; at < 176; at += 4) expected.Put(240 * i + at, growth(at));
    }
    EXPECT_TRUE(Same(Read(true), expected));
  }
}

TEST_F(VideoLayers, BeginANewIntervalAfterAResettingRead) {
  for (const std::int32_t count : {-1, 0, 1, 6, 7}) {
    Fill(VideoBytes::Pattern(3).Put(1440, count));
    Read(true);
    for (int i = 0; i < std::clamp(count, 0, 6); ++i) {
      const auto base = static_cast<std::size_t>(240 * i);
      expected.Zero(base + 32, 5).Zero(base + 184, 12);
    }
    EXPECT_TRUE(Same(Read(), expected.Put<std::int32_t>(1752, -1))) << count;
  }
}

TEST_F(VideoLayers, ReportNoGrowthTwice) {
  Fill(VideoBytes::Pattern(4).Put(1440, 6));
  Read(true);
  const VideoBytes report = Read(true);
  for (std::size_t base = 0; base < 1440; base += 240) {
    EXPECT_EQ(report.Take<std::uint32_t>(base + 224), 0U);
    EXPECT_EQ(report.Take<std::uint32_t>(base + 228), 0U);
    EXPECT_EQ(report.Take<std::uint32_t>(base + 104), 0U);
    for (std::size_t at = 132; at < 176; at += 4) EXPECT_EQ(report.Take<std::uint32_t>(base + at), 0U);
    EXPECT_EQ(report.Take<std::uint32_t>(base + 20), expected.Take<std::uint32_t>(base + 20));
    EXPECT_EQ(report.Take<std::uint32_t>(base + 24), expected.Take<std::uint32_t>(base + 24));
  }
}

TEST_F(VideoLayers, ForgetWhatWasReportedOnReset) {
  for (const bool sentOnly : {false, true}) {
    Fill(VideoBytes::Pattern(5).Put(1440, 6));
    Read(true);
    sentOnly ? info.resetTxVideoStatisticInfo() : info.reset(1);
    Fill(VideoBytes::Pattern(5).Put(1440, 6));
    const VideoBytes report = Read(true);
    EXPECT_EQ(report.Take<std::uint32_t>(1200 + 224), expected.Take<std::uint32_t>(1200 + 20));
    EXPECT_EQ(report.Take<std::uint32_t>(1200 + 172), expected.Take<std::uint32_t>(1200 + 172));
  }
}

}  // namespace
