// SPDX-License-Identifier: Apache-2.0
#include "AudioModel.h"

#include <map>

namespace fuzz {

void AudioModel::Reset(std::uint32_t callId) {
  m_tx.Clear();
  for (Block& block : m_rx) block.Clear();
  for (Sync& sync : m_sync) sync.Clear();
  m_callId = callId;
  startInterval();
}

AudioModel::Block AudioModel::ReadTx(bool reset) {
  const Block read = m_tx;
  if (reset) {
    startInterval();
    m_tx.Put(76, 0.0F);
    m_tx.Put(80, 0.0F);
  }
  return read;
}

AudioModel::Block AudioModel::ReadRx(int stream, bool reset) {
  const Block read = Rx(stream);
  if (reset) {
    for (const std::size_t offset : {120U, 124U, 128U}) Rx(stream).Put<std::uint32_t>(offset, 0);
  }
  return read;
}

void AudioModel::Triple(Block& block, std::size_t offset, float first, float second, float third) {
  block.Put(offset, first);
  block.Put(offset + 4, second);
  block.Put(offset + 8, third);
}

void AudioModel::Wide(Block& block, std::size_t offset, std::uint64_t number) {
  block.Put(offset, static_cast<std::uint32_t>(number));
  block.Put(offset + 4, static_cast<std::uint32_t>(number >> 32));
}

void AudioModel::PayloadType(Block& block, std::int32_t payloadType) {
  static const std::map<std::int32_t, std::uint32_t> codes{{0, 1},    {8, 2},    {9, 5},   {18, 7},
                                                           {101, 4},  {102, 3},  {103, 8}, {104, 9},
                                                           {105, 10}, {106, 11}, {107, 12}};
  if (const auto found = codes.find(payloadType); found != codes.end()) block.Put(12, found->second);
}

void AudioModel::startInterval() {
  Triple(m_tx, 60, -100, -100, -100);
  Triple(m_tx, 84, -100, -100, -100);
  m_tx.Put<std::uint32_t>(112, 20);
}

}  // namespace fuzz
