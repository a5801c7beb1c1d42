// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "ByteBlock.h"

namespace fuzz {

constexpr int kStreams = 20;

/// What an audio statistics object must hold, byte for byte, by the documented offsets only.
class AudioModel {
 public:
  using Block = ByteBlock<260>;
  using Sync = ByteBlock<120>;

  explicit AudioModel(std::uint32_t callId) { Reset(callId); }

  void Reset(std::uint32_t callId);
  /// What a read returns; with `reset` the interval ends.
  Block ReadTx(bool reset);
  Block ReadRx(int stream, bool reset);
  Block& Tx() { return m_tx; }
  /// The stream's block; one that nobody reads when there is no such stream.
  Block& Rx(std::int32_t stream) {
    return IsStream(stream) ? m_rx[static_cast<std::size_t>(stream)] : m_nowhere;
  }
  Sync& SyncOf(std::int32_t stream) {
    return IsStream(stream) ? m_sync[static_cast<std::size_t>(stream)] : m_noSync;
  }
  std::uint32_t CallId() const { return m_callId; }

  static bool IsStream(std::int32_t stream) { return stream >= 0 && stream < kStreams; }
  static void Triple(Block& block, std::size_t offset, float first, float second, float third);
  /// A 64-bit number as its halves, the low one first.
  static void Wide(Block& block, std::size_t offset, std::uint64_t number);
  static void PayloadType(Block& block, std::int32_t payloadType);

 private:
  void startInterval();

  std::uint32_t m_callId = 0;
  Block m_tx;
  std::array<Block, kStreams> m_rx;
  std::array<Sync, kStreams> m_sync;
  Block m_nowhere;
  Sync m_noSync;
};

}  // namespace fuzz
