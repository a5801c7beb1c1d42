// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ByteBlock.h"

namespace fuzz {

constexpr int kLayers = 6;
constexpr std::size_t kStreamSize = 400;

/// The streams that a caller hands in: raw records of kStreamSize bytes; null for none.
using StreamBytes = const std::uint8_t*;

/// What a video statistics object must hold, byte for byte, by the documented offsets only.
class VideoModel {
 public:
  using Block = ByteBlock<2064>;

  explicit VideoModel(std::uint32_t callId) { Reset(callId); }

  void Reset(std::uint32_t callId);
  void ResetTx();
  /// What a read returns; with `reset` the interval ends.
  Block Read(bool reset);
  Block& Tx() { return m_tx; }
  std::uint32_t CallId() const { return m_callId; }

  void NoiseLevel(std::int32_t level);
  void Streams(StreamBytes streams, std::int32_t count);
  void OneLayer(StreamBytes streams, std::int32_t index, bool clear, std::uint32_t encodedFrames);
  void ConfigureChange(StreamBytes streams, std::int32_t count);
  void IdrRequests(std::uint32_t count, StreamBytes streams, std::int32_t index, bool all);
  void IdrSent(std::uint32_t count, StreamBytes streams, std::int32_t index);
  /// Values for layers 0 to count - 1 at `offset`; `values` is the raw array.
  void EachLayer(std::size_t offset, const std::uint8_t* values, int count);
  void OneValue(std::size_t offset, const std::uint8_t* values, std::uint32_t index);
  void Codec(std::size_t offset, std::int32_t codec);

 private:
  static std::size_t layerAt(int layer, std::size_t offset) {
    return static_cast<std::size_t>(layer) * 240 + offset;
  }
  void copy(int layer, std::size_t to, StreamBytes stream, std::size_t from, std::size_t words = 1);
  void stream(int layer, StreamBytes stream);
  void clearInterval(int layer);

  std::uint32_t m_callId = 0;
  Block m_tx;
  Block m_reported;  // The counters of the last resetting read, at their places.
};

}  // namespace fuzz
