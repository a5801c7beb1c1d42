// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalAudioStatisticInfo.h"

#include <optional>

#include "journal/JournalSource.h"
#include "statistics/BlockCopy.h"
#include "statistics/KalCodec.h"
#include "statistics/RelaxedAccess.h"
#include "statistics/StatisticsInterface.h"

namespace relaxed = kalStore::internal::relaxed;
using kalStore::kResultNotFound;
using kalStore::kResultOk;
using kalStore::st_KalAudioBlock;
using kalStore::internal::CopyIn;
using kalStore::internal::CopyOut;

namespace {

constexpr float kNoLevel = -100.0F;
constexpr std::uint32_t kInitialStat112 = 20;

bool IsStream(std::int32_t stream) {
  return stream >= 0 && stream < kalStore::kAudioStreamCount;
}

void StoreTriple(float (&members)[3], float first, float second, float third) {
  relaxed::Store(members[0], first);
  relaxed::Store(members[1], second);
  relaxed::Store(members[2], third);
}

void StoreWide(kalStore::st_KalUInt64& member, std::uint64_t value) {
  relaxed::Store(member.low, static_cast<std::uint32_t>(value));
  relaxed::Store(member.high, static_cast<std::uint32_t>(value >> 32));
}

void StorePayloadType(st_KalAudioBlock& block, kalStore::KAL_AUDIO_PAYLOAD_TYPE payloadType) {
  if (const auto code = kalStore::internal::AudioCodecCode(payloadType))
    relaxed::Store(block.codecCode, *code);
}

// The Tx block before anything is measured.
constexpr st_KalAudioBlock InitialTxBlock() {
  st_KalAudioBlock block{};
  for (float& level : block.noiseLevel) level = kNoLevel;
  for (float& level : block.speechLevel) level = kNoLevel;
  block.stat112 = kInitialStat112;
  return block;
}

// Moves what was measured in an interval from `members` to `out`, and begins the next interval with
// `initial`.
void TakeTriple(float (&out)[3], float (&members)[3], float initial) {
  for (int i = 0; i < 3; ++i) out[i] = relaxed::Exchange(members[i], initial);
}

}  // namespace

KalAudioStatisticInfo::KalAudioStatisticInfo(std::uint32_t callId) {
  KalAudioStatisticInfo::reset(callId);
}

KalAudioStatisticInfo::~KalAudioStatisticInfo() = default;

std::int32_t KalAudioStatisticInfo::UpdateTxMediaInfo(void* buffer) {
  return CopyIn(m_txBlock, buffer);
}

std::int32_t KalAudioStatisticInfo::UpdateRxMediaInfo(void* /*buffer*/) {
  return kResultNotFound;
}

std::int32_t KalAudioStatisticInfo::GetTxMediaInfo(void* buffer, bool reset) {
  return CopyOut(m_txBlock, buffer, [&](st_KalAudioBlock& report) {
    if (!reset) return;
    TakeTriple(report.noiseLevel, m_txBlock.noiseLevel, kNoLevel);
    TakeTriple(report.speechLevel, m_txBlock.speechLevel, kNoLevel);
    report.aecLevel[1] = relaxed::Exchange(m_txBlock.aecLevel[1], 0);
    report.aecLevel[2] = relaxed::Exchange(m_txBlock.aecLevel[2], 0);
    report.stat112 = relaxed::Exchange(m_txBlock.stat112, kInitialStat112);
  });
}

std::int32_t KalAudioStatisticInfo::GetRxMediaInfo(void* /*buffer*/, bool /*reset*/) {
  return kResultOk;
}

void KalAudioStatisticInfo::reset(std::uint32_t callId) {
  relaxed::StoreBlock(m_txBlock, InitialTxBlock());
  relaxed::ClearBlocks(m_rxBlocks);
  relaxed::ClearBlocks(m_syncRecords);
  relaxed::Store(m_callId, callId);
}

std::uint32_t KalAudioStatisticInfo::GetCallId() {
  return relaxed::Load(m_callId);
}

void KalAudioStatisticInfo::updateSendCodecInfo(kalStore::st_KalAudioCodecStatisticsInfo& codec) {
  relaxed::Store(m_txBlock.codecStat0, codec.stat0);
  relaxed::Store(m_txBlock.stat4, codec.stat4);
  StorePayloadType(m_txBlock, codec.payloadType);
  relaxed::Store(m_txBlock.encodeDropMs, codec.encodeDropMs);
  StoreWide(m_txBlock.codecStat16, codec.stat16);
  StoreWide(m_txBlock.codecStat24, codec.stat24);
}

void KalAudioStatisticInfo::updateTxBitRate(std::uint32_t bitrate) {
  relaxed::Store(m_txBlock.bitrate, bitrate);
}

void KalAudioStatisticInfo::updateRxBitRate(std::int32_t stream, std::uint32_t bitrate) {
  if (!IsStream(stream)) return;
  relaxed::Store(m_rxBlocks[stream].bitrate, bitrate);
}

void KalAudioStatisticInfo::updateUnstableEventCount(std::uint32_t count) {
  relaxed::Store(m_txBlock.unstableEvents, count);
}

void KalAudioStatisticInfo::updateAECLevel(float first, float second, float third) {
  StoreTriple(m_txBlock.aecLevel, first, second, third);
}

void KalAudioStatisticInfo::updateNoiseLevel(float first, float second, float third) {
  StoreTriple(m_txBlock.noiseLevel, first, second, third);
}

void KalAudioStatisticInfo::updateSpeechLevel(float first, float second, float third) {
  StoreTriple(m_txBlock.speechLevel, first, second, third);
}

void KalAudioStatisticInfo::updatePayloadType(std::int32_t stream,
                                              kalStore::KAL_AUDIO_PAYLOAD_TYPE payloadType) {
  if (!IsStream(stream)) return;
  StorePayloadType(m_rxBlocks[stream], payloadType);
}

void KalAudioStatisticInfo::updateDecodeInfo(std::int32_t stream, bool lbrr, std::uint32_t stat4) {
  if (!IsStream(stream)) return;
  relaxed::Store(m_rxBlocks[stream].lbrrFlag, lbrr);
  relaxed::Store(m_rxBlocks[stream].stat4, stat4);
}

void KalAudioStatisticInfo::updateJitterBufferStatistics(std::int32_t stream,
                                                         kalStore::st_KalAudioJitterBufferStatistics& jitter,
                                                         std::int32_t jitter1, std::int32_t jitter2) {
  if (!IsStream(stream)) return;
  st_KalAudioBlock& block = m_rxBlocks[stream];
  relaxed::Store(block.jitterBytes.jitter1, static_cast<std::uint8_t>(jitter1));
  relaxed::Store(block.jitterBytes.jitter2, static_cast<std::uint8_t>(jitter2));
  relaxed::Store(block.stat112, jitter.stat36);
  relaxed::Store(block.jitterStat12, jitter.stat12);
  relaxed::Store(block.jitterStat8, jitter.stat8);
  relaxed::Store(block.jitterStat16, jitter.stat16);
  StoreWide(block.jitterStat40, jitter.stat40);
  relaxed::Store(block.jitterStat48, jitter.stat48);
}

void KalAudioStatisticInfo::updateE2EDelayInfo(std::int32_t stream, std::uint32_t first, std::uint32_t second,
                                               std::uint32_t third) {
  if (!IsStream(stream)) return;
  auto& delay = m_rxBlocks[stream].e2eDelay;
  relaxed::Store(delay[0], first);
  relaxed::Store(delay[1], second);
  relaxed::Store(delay[2], third);
}

void KalAudioStatisticInfo::updateCodecStaticsLBRRflag(std::int32_t stream, bool lbrr) {
  if (!IsStream(stream)) return;
  relaxed::Store(m_rxBlocks[stream].lbrrFlag, lbrr);
}

void KalAudioStatisticInfo::updateCodecStaticsLBRRflag(bool lbrr) {
  relaxed::Store(m_txBlock.lbrrFlag, lbrr);
}

void KalAudioStatisticInfo::updateTxEncodeDropFrameinMS(std::uint32_t milliseconds) {
  relaxed::Store(m_txBlock.encodeDropMs, milliseconds);
}

void KalAudioStatisticInfo::updateAVSyncStatistics(std::int32_t stream, kal::_tagSyncStatistics& sync) {
  if (!IsStream(stream)) return;
  relaxed::StoreBlock(m_syncRecords[stream], sync);
}

std::int32_t KalAudioStatisticInfo::GetRxAudioInfo(void* buffer, std::int32_t stream, bool reset) {
  if (!IsStream(stream)) return kResultNotFound;
  st_KalAudioBlock& block = m_rxBlocks[stream];
  return CopyOut(block, buffer, [&](st_KalAudioBlock& report) {
    if (!reset) return;
    report.jitterStat12 = relaxed::Exchange(block.jitterStat12, 0);
    report.jitterStat8 = relaxed::Exchange(block.jitterStat8, 0);
    report.jitterStat16 = relaxed::Exchange(block.jitterStat16, 0);
  });
}

std::int32_t KalAudioStatisticInfo::GetAVSyncInfo(void* buffer, std::int32_t stream) {
  if (!IsStream(stream)) return kResultNotFound;
  return CopyOut(m_syncRecords[stream], buffer, [](const auto&) {});
}

std::uint32_t KalAudioStatisticInfo::AddRef() {
  return AddReference();
}

std::uint32_t KalAudioStatisticInfo::Release() {
  return kalStore::internal::CallForCaller([this] { return ReleaseReference(); });
}

std::uint32_t KalAudioStatisticInfo::GetReference() {
  return ReferenceCount();
}

std::int32_t KalAudioStatisticInfo::QueryInterface(const kal::_tagUUID& iid, void** ppv) {
  return kalStore::internal::QueryStatisticsInterface(*this, iid, ppv);
}
