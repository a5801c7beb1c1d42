// SPDX-License-Identifier: Apache-2.0
#include "VideoModel.h"

#include <algorithm>
#include <cstring>

namespace fuzz {
namespace {

// The members of a layer that a resetting read reports as differences.
struct Counter {
  std::size_t offset;
  std::size_t deltaAt;
};
constexpr Counter kCounters[] = {{20, 224},  {24, 228},  {104, 104}, {132, 132}, {136, 136},
                                 {140, 140}, {144, 144}, {148, 148}, {152, 152}, {156, 156},
                                 {160, 160}, {164, 164}, {168, 168}, {172, 172}};

int LayersOf(std::int32_t count) {
  return std::clamp(count, 0, kLayers);
}

bool IsLayer(std::int32_t index) {
  return index >= 0 && index < kLayers;
}

template <class Value>
Value From(StreamBytes stream, std::size_t offset) {
  Value value;
  std::memcpy(&value, stream + offset, sizeof value);
  return value;
}

StreamBytes StreamAt(StreamBytes streams, int index) {
  return streams + static_cast<std::size_t>(index) * kStreamSize;
}

}  // namespace

void VideoModel::Reset(std::uint32_t callId) {
  ResetTx();
  m_callId = callId;
  m_tx.Put<std::int32_t>(1752, -1);
}

void VideoModel::ResetTx() {
  m_tx.Clear();
  m_reported.Clear();
}

VideoModel::Block VideoModel::Read(bool reset) {
  Block read = m_tx;
  if (!reset) return read;
  for (int layer = 0; layer < LayersOf(m_tx.At<std::int32_t>(1440)); ++layer) {
    for (const auto& [offset, deltaAt] : kCounters) {
      const std::size_t at = layerAt(layer, offset);
      const auto now = m_tx.At<std::uint32_t>(at);
      read.Put(layerAt(layer, deltaAt), now - m_reported.At<std::uint32_t>(at));
      m_reported.Put(at, now);
    }
    clearInterval(layer);
  }
  m_tx.Put<std::int32_t>(1752, -1);
  return read;
}

void VideoModel::NoiseLevel(std::int32_t level) {
  m_tx.Put(1752, std::max(level, m_tx.At<std::int32_t>(1752)));
}

void VideoModel::Streams(StreamBytes streams, std::int32_t count) {
  m_tx.Put(1440, count);
  if (streams == nullptr) return;
  for (int layer = 0; layer < LayersOf(count); ++layer) stream(layer, StreamAt(streams, layer));
}

void VideoModel::OneLayer(StreamBytes streams, std::int32_t index, bool clear, std::uint32_t encodedFrames) {
  if (IsLayer(index) && streams != nullptr) {
    const StreamBytes in = StreamAt(streams, index);
    copy(index, 0, in, 0, 4);
    Codec(layerAt(index, 16), From<std::int32_t>(in, 16));
    copy(index, 20, in, 84, 3);
    stream(index, in);
  }
  m_tx.Put(1488, encodedFrames);
  if (IsLayer(index) && clear) {
    for (const auto& counter : kCounters) m_reported.Put<std::uint32_t>(layerAt(index, counter.offset), 0);
    clearInterval(index);
  }
}

void VideoModel::ConfigureChange(StreamBytes streams, std::int32_t count) {
  if (streams == nullptr) return;
  for (int layer = 0; layer < LayersOf(count); ++layer) copy(layer, 104, StreamAt(streams, layer), 112);
}

void VideoModel::IdrRequests(std::uint32_t count, StreamBytes streams, std::int32_t index, bool all) {
  m_tx.Put(1464, count);
  if (streams == nullptr) return;
  if (!all && IsLayer(index)) copy(index, 24, StreamAt(streams, index), 88);
  if (!all) return;
  for (int layer = 0; layer < LayersOf(index); ++layer) copy(layer, 24, StreamAt(streams, layer), 88);
}

void VideoModel::IdrSent(std::uint32_t count, StreamBytes streams, std::int32_t index) {
  m_tx.Put(1468, count);
  if (streams == nullptr || !IsLayer(index)) return;
  copy(index, 28, StreamAt(streams, index), 92);
  copy(index, 132, StreamAt(streams, index), 248, 11);
}

void VideoModel::EachLayer(std::size_t offset, const std::uint8_t* values, int count) {
  if (values == nullptr) return;
  for (int layer = 0; layer < LayersOf(count); ++layer) {
    m_tx.Put(layerAt(layer, offset), From<std::uint32_t>(values, static_cast<std::size_t>(layer) * 4));
  }
}

void VideoModel::OneValue(std::size_t offset, const std::uint8_t* values, std::uint32_t index) {
  if (values == nullptr || index >= static_cast<std::uint32_t>(kLayers)) return;
  m_tx.Put(layerAt(static_cast<int>(index), offset), From<std::uint32_t>(values, std::size_t{index} * 4));
}

void VideoModel::Codec(std::size_t offset, std::int32_t codec) {
  constexpr std::uint32_t kCodes[] = {100, 101, 0, 104};
  m_tx.Put(offset, codec >= 0 && codec < 4 ? kCodes[codec] : 0U);
}

void VideoModel::copy(int layer, std::size_t to, StreamBytes stream, std::size_t from, std::size_t words) {
  std::memcpy(m_tx.Bytes() + layerAt(layer, to), stream + from, words * 4);
}

void VideoModel::stream(int layer, StreamBytes in) {
  copy(layer, 8, in, 8, 2);
  m_tx.Put(layerAt(layer, 40), static_cast<float>(From<std::uint64_t>(in, 56)));
  m_tx.Put(layerAt(layer, 44), static_cast<float>(From<std::uint64_t>(in, 48)));
  copy(layer, 48, in, 80);
  copy(layer, 56, in, 104, 2);
  copy(layer, 108, in, 200, 4);
  copy(layer, 124, in, 124);
  copy(layer, 128, in, 148);
  const auto least = m_tx.At<std::int32_t>(layerAt(layer, 184));
  const auto candidate = From<std::int32_t>(in, 300);
  if (candidate > 0 && (least <= 0 || candidate < least)) m_tx.Put(layerAt(layer, 184), candidate);
  const auto greatest = m_tx.At<std::int32_t>(layerAt(layer, 188));
  m_tx.Put(layerAt(layer, 188), std::max(greatest, From<std::int32_t>(in, 304)));
  copy(layer, 192, in, 308);
}

void VideoModel::clearInterval(int layer) {
  m_tx.Put<std::uint32_t>(layerAt(layer, 32), 0);
  m_tx.Put<std::uint8_t>(layerAt(layer, 36), 0);
  for (const std::size_t offset : {184U, 188U, 192U}) m_tx.Put<std::uint32_t>(layerAt(layer, offset), 0);
}

}  // namespace fuzz
