// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>

#include "statistics/Growth.h"
#include "statistics/RelaxedAccess.h"
#include "tessel/KalStatisticsTypes.h"
#include "tessel/KalVideoStatisticInfo.h"

namespace relaxed = kalStore::internal::relaxed;
using kalStore::kVideoLayerCount;
using kalStore::st_KalVideoLayer;
using kalStore::st_KalVideoStreamStatInfo;
using kalStore::internal::TakeGrowth;

namespace {

bool IsLayer(std::int32_t index) {
  return index >= 0 && index < kVideoLayerCount;
}

// The number of layers to process for a caller's count.
int LayerCount(std::int32_t count) {
  return std::clamp(count, 0, kVideoLayerCount);
}

template <class T, std::size_t size>
void StoreEach(T (&members)[size], const T (&values)[size]) {
  for (std::size_t i = 0; i < size; ++i) relaxed::Store(members[i], values[i]);
}

bool IsLessPositive(std::int32_t value, std::int32_t stored) {
  return value > 0 && (stored <= 0 || value < stored);
}

// What every report of a stream updates in its layer.
void StoreStream(st_KalVideoLayer& layer, const st_KalVideoStreamStatInfo& stream) {
  relaxed::Store(layer.streamWords[2], stream.streamWords[2]);
  relaxed::Store(layer.streamWords[3], stream.streamWords[3]);
  relaxed::Store(layer.stat40, static_cast<float>(stream.stat56));
  relaxed::Store(layer.stat44, static_cast<float>(stream.stat48));
  relaxed::Store(layer.stat48, stream.stat80);
  relaxed::Store(layer.stat56, stream.stat104);
  relaxed::Store(layer.stat60, stream.stat108);
  StoreEach(layer.stats108, stream.stats200);
  relaxed::Store(layer.stat124, stream.stat124);
  relaxed::Store(layer.stat128, stream.stat148);
  relaxed::StoreIf(layer.intervalMinimum, stream.stat300, IsLessPositive);
  relaxed::StoreIf(layer.intervalMaximum, stream.stat304, std::greater<>());
  relaxed::Store(layer.intervalLast, stream.stat308);
}

}  // namespace

void KalVideoStatisticInfo::UpdateStreamsInfo(st_KalVideoStreamStatInfo* streams, std::int32_t count) {
  relaxed::Store(m_txBlock.activeStreams, count);
  if (streams == nullptr) return;
  for (int i = 0; i < LayerCount(count); ++i) StoreStream(m_txBlock.layer[i], streams[i]);
}

void KalVideoStatisticInfo::UpdateOneVideoLayerInfo(st_KalVideoStreamStatInfo* streams, std::int32_t index,
                                                    bool clear, std::uint32_t encodedFrames) {
  if (IsLayer(index) && streams != nullptr) {
    st_KalVideoLayer& layer = m_txBlock.layer[index];
    const st_KalVideoStreamStatInfo& stream = streams[index];
    relaxed::Store(layer.streamWords[0], stream.streamWords[0]);
    relaxed::Store(layer.streamWords[1], stream.streamWords[1]);
    relaxed::Store(layer.codecCode, kalStore::mapToKALCodec(stream.codecType));
    relaxed::Store(layer.counter, stream.counter);
    relaxed::Store(layer.idrRequests, stream.idrRequests);
    relaxed::Store(layer.idrSent, stream.idrSent);
    StoreStream(layer, stream);
  }
  relaxed::Store(m_txBlock.encodedFrames, encodedFrames);
  if (clear && IsLayer(index)) {
    relaxed::StoreBlock(m_snapshots[index], {});
    st_KalVideoLayer dropped;
    takeInterval(index, dropped);
  }
}

void KalVideoStatisticInfo::UpdateVideoConfigureChange(st_KalVideoStreamStatInfo* streams,
                                                       std::int32_t count) {
  if (streams == nullptr) return;
  for (int i = 0; i < LayerCount(count); ++i) {
    relaxed::Store(m_txBlock.layer[i].configChanges, streams[i].configChanges);
  }
}

void KalVideoStatisticInfo::UpdateVideoEncIdrReqNum(std::uint32_t count, st_KalVideoStreamStatInfo* streams,
                                                    std::int32_t index, bool all) {
  relaxed::Store(m_txBlock.idrRequests, count);
  if (streams == nullptr) return;
  if (all) {
    for (int i = 0; i < LayerCount(index); ++i) {
      relaxed::Store(m_txBlock.layer[i].idrRequests, streams[i].idrRequests);
    }
  } else if (IsLayer(index)) {
    relaxed::Store(m_txBlock.layer[index].idrRequests, streams[index].idrRequests);
  }
}

void KalVideoStatisticInfo::UpdateVideoEncIdrSentAndReasonCnt(std::uint32_t count,
                                                              st_KalVideoStreamStatInfo* streams,
                                                              std::int32_t index) {
  relaxed::Store(m_txBlock.idrSent, count);
  if (streams == nullptr || !IsLayer(index)) return;
  relaxed::Store(m_txBlock.layer[index].idrSent, streams[index].idrSent);
  StoreEach(m_txBlock.layer[index].idrReasons, streams[index].idrReasons);
}

void KalVideoStatisticInfo::UpdateProfile(std::uint32_t* profiles, std::int32_t count) {
  if (profiles == nullptr) return;
  for (int i = 0; i < LayerCount(count); ++i) relaxed::Store(m_txBlock.layer[i].profile, profiles[i]);
}

void KalVideoStatisticInfo::UpdateEncodeControlTargetFps(float* fps, std::int32_t count) {
  if (fps == nullptr || count > kVideoLayerCount) return;
  for (int i = 0; i < count; ++i) relaxed::Store(m_txBlock.layer[i].targetFps, fps[i]);
}

void KalVideoStatisticInfo::UpdateFBufferOcuppiedVideo(float* values, std::uint32_t index) {
  if (values == nullptr || index >= kVideoLayerCount) return;
  relaxed::Store(m_txBlock.layer[index].bufferOccupancy, values[index]);
}

// Ends the interval of the layers in use: turns `report`, a copy of the block, into the report of the
// interval. What ends with it is exchanged, so that an update beside this read is in this report or in the
// next one.
void KalVideoStatisticInfo::reportInterval(kalStore::st_KalVideoTxBlock& report) {
  for (int i = 0; i < LayerCount(report.activeStreams); ++i) {
    const st_KalVideoLayer& layer = m_txBlock.layer[i];
    LayerSnapshot& reported = m_snapshots[i];
    st_KalVideoLayer& out = report.layer[i];
    out.counterDelta = TakeGrowth(reported.counter, layer.counter, out.counter);
    out.idrRequestsDelta = TakeGrowth(reported.idrRequests, layer.idrRequests, out.idrRequests);
    out.configChanges = TakeGrowth(reported.configChanges, layer.configChanges, out.configChanges);
    for (std::size_t reason = 0; reason < std::size(out.idrReasons); ++reason) {
      std::uint32_t& growth = out.idrReasons[reason];
      growth = TakeGrowth(reported.idrReasons[reason], layer.idrReasons[reason], growth);
    }
    takeInterval(i, out);
  }
}

// Moves the interval members of a layer to `out` and begins their next interval.
void KalVideoStatisticInfo::takeInterval(int index, st_KalVideoLayer& out) {
  st_KalVideoLayer& layer = m_txBlock.layer[index];
  out.interval32 = relaxed::Exchange(layer.interval32, 0);
  out.interval36 = relaxed::Exchange(layer.interval36, 0);
  out.intervalMinimum = relaxed::Exchange(layer.intervalMinimum, 0);
  out.intervalMaximum = relaxed::Exchange(layer.intervalMaximum, 0);
  out.intervalLast = relaxed::Exchange(layer.intervalLast, 0);
}
