// SPDX-License-Identifier: Apache-2.0
#include "tessel/statistics_members.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "tessel/StatisticsBlocks.h"

namespace kalStore {

namespace {

using Members = std::vector<StatisticsMember>;

template <class T>
struct ShownMember {
  static std::string Text(const char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return Of(value);
  }

  static std::string Of(T value) {
    if constexpr (std::is_enum_v<T>) {
      return ShownMember<std::underlying_type_t<T>>::Of(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_same_v<T, st_KalUInt64>) {
      return ShownMember<std::uint64_t>::Of(value.Value());
    } else {
      std::array<char, 64> text;
      return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
    }
  }
};

template <std::size_t size>
struct ShownMember<char[size]> {
  static std::string Text(const char* bytes) { return {bytes, strnlen(bytes, size)}; }
};

template <class T>
void Add(Members& members, std::string name, const char* unit, std::size_t offset) {
  constexpr bool isText = std::is_same_v<std::remove_extent_t<T>, char>;
  if constexpr (std::is_array_v<T> && !isText) {
    using Element = std::remove_extent_t<T>;
    for (std::size_t i = 0; i < std::extent_v<T>; ++i) {
      Add<Element>(members, name + "[" + std::to_string(i) + "]", unit, offset + i * sizeof(Element));
    }
  } else {
    members.push_back({std::move(name), unit, offset, sizeof(T), isText, &ShownMember<T>::Text});
  }
}

#define MEMBER(member, unit) \
  Add<decltype(std::declval<Block&>().member)>(members, #member, unit, offsetof(Block, member))

// None of these is ever destroyed: a recording that ends with the process still reads them.
const Members& LayerMembers() {
  using Block = st_KalVideoLayer;
  static const Members& all = *new Members([] {
    Members members;
    MEMBER(streamWords, "");
    MEMBER(codecCode, "");
    MEMBER(counter, "");
    MEMBER(counterDelta, "");
    MEMBER(idrRequests, "frames");
    MEMBER(idrRequestsDelta, "frames");
    MEMBER(idrSent, "frames");
    MEMBER(idrReasons, "frames");
    MEMBER(configChanges, "");
    MEMBER(profile, "");
    MEMBER(targetFps, "fps");
    MEMBER(bufferOccupancy, "");
    MEMBER(interval32, "");
    MEMBER(interval36, "");
    MEMBER(intervalMinimum, "");
    MEMBER(intervalMaximum, "");
    MEMBER(intervalLast, "");
    MEMBER(stat40, "");
    MEMBER(stat44, "");
    MEMBER(stat48, "");
    MEMBER(stat56, "");
    MEMBER(stat60, "");
    MEMBER(stats108, "");
    MEMBER(stat124, "");
    MEMBER(stat128, "");
    return members;
  }());
  return all;
}

const Members& VideoCallMembers() {
  using Block = st_KalVideoTxBlock;
  static const Members& all = *new Members([] {
    Members members;
    MEMBER(activeStreams, "");
    MEMBER(codecCode, "");
    MEMBER(encodedWidth, "px");
    MEMBER(encodedHeight, "px");
    MEMBER(encoderFps, "fps");
    MEMBER(encoderBitrate, "bit/s");
    MEMBER(encoderBitrate2, "bit/s");
    MEMBER(hardwareEncoder, "");
    MEMBER(downType, "");
    MEMBER(frameSize, "");
    MEMBER(frameSize2, "");
    MEMBER(capturedFrames, "frames");
    MEMBER(framesFedToEncoder, "frames");
    MEMBER(encodedFrames, "frames");
    MEMBER(idrRequests, "frames");
    MEMBER(idrSent, "frames");
    MEMBER(performanceWarnings, "");
    MEMBER(noiseLevel, "");
    MEMBER(roiAreaRatio, "");
    MEMBER(process1, "");
    MEMBER(process2, "");
    MEMBER(other1, "");
    MEMBER(other2, "");
    MEMBER(other3, "");
    MEMBER(other5, "");
    MEMBER(other6, "");
    MEMBER(other7, "");
    MEMBER(av1Metric, "");
    MEMBER(av1Name1, "");
    MEMBER(av1Name2, "");
    return members;
  }());
  return all;
}

const Members& SharedAudioMembers() {
  using Block = st_KalAudioBlock;
  static const Members& all = *new Members([] {
    Members members;
    MEMBER(lbrrFlag, "");
    MEMBER(stat4, "");
    MEMBER(bitrate, "bit/s");
    MEMBER(codecCode, "");
    MEMBER(stat112, "");
    return members;
  }());
  return all;
}

const Members& SentAudioMembers() {
  using Block = st_KalAudioBlock;
  static const Members& all = *new Members([] {
    Members members;
    MEMBER(codecStat0, "");
    MEMBER(encodeDropMs, "ms");
    MEMBER(noiseLevel, "dB");
    MEMBER(aecLevel, "dB");
    MEMBER(speechLevel, "dB");
    MEMBER(codecStat16, "");
    MEMBER(codecStat24, "");
    MEMBER(unstableEvents, "");
    return members;
  }());
  return all;
}

const Members& ReceivedAudioMembers() {
  using Block = st_KalAudioBlock;
  static const Members& all = *new Members([] {
    Members members;
    MEMBER(jitterBytes.jitter1, "");
    MEMBER(jitterBytes.jitter2, "");
    MEMBER(jitterStat8, "");
    MEMBER(jitterStat12, "");
    MEMBER(jitterStat16, "");
    MEMBER(jitterStat40, "");
    MEMBER(jitterStat48, "");
    MEMBER(e2eDelay, "ms");
    return members;
  }());
  return all;
}

#undef MEMBER

StatisticsKind VideoKind() {
  StatisticsKind kind{"video", sizeof(st_KalVideoTxBlock), {}};
  kind.sections.push_back({"call", 0, kind.blockSize, false, &VideoCallMembers()});
  for (std::size_t i = 0; i < kVideoLayerCount; ++i) {
    const std::size_t offset = offsetof(st_KalVideoTxBlock, layer) + i * sizeof(st_KalVideoLayer);
    kind.sections.push_back(
        {"layer" + std::to_string(i), offset, sizeof(st_KalVideoLayer), true, &LayerMembers()});
  }
  return kind;
}

StatisticsKind AudioKind() {
  const std::size_t size = sizeof(st_KalAudioBlock);
  return {"audio",
          size,
          {{"both", 0, size, false, &SharedAudioMembers()},
           {"sent", 0, size, false, &SentAudioMembers()},
           {"received", 0, size, false, &ReceivedAudioMembers()}}};
}

}  // namespace

std::span<const StatisticsKind> StatisticsKinds() {
  static const std::array<StatisticsKind, 2>& kinds = *new std::array{VideoKind(), AudioKind()};
  return kinds;
}

}  // namespace kalStore
