// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalVideoStatisticInfo.h"

#include <cstddef>
#include <functional>

#include "journal/JournalSource.h"
#include "statistics/BlockCopy.h"
#include "statistics/RelaxedAccess.h"
#include "statistics/StatisticsInterface.h"
#include "tessel/KalStatisticsTypes.h"
#include "util/bounded_copy.h"

namespace relaxed = kalStore::internal::relaxed;
using kalStore::kResultNotFound;
using kalStore::internal::CopyIn;
using kalStore::internal::CopyOut;

namespace {

constexpr std::int32_t kNoNoise = -1;

// The last character of the field stays NUL, so that a reader beside the writer finds an end.
template <std::size_t size>
void StoreString(char (&field)[size], const char* text) {
  const std::size_t length = strnlen_s(text, size - 1);
  for (std::size_t i = 0; i < length; ++i) relaxed::Store(field[i], text[i]);
  relaxed::Store(field[length], '\0');
}

}  // namespace

KalVideoStatisticInfo::KalVideoStatisticInfo(std::uint32_t callId) {
  KalVideoStatisticInfo::reset(callId);
}

KalVideoStatisticInfo::~KalVideoStatisticInfo() = default;

std::int32_t KalVideoStatisticInfo::UpdateTxMediaInfo(void* buffer) {
  return CopyIn(m_txBlock, buffer);
}

std::int32_t KalVideoStatisticInfo::UpdateRxMediaInfo(void* /*buffer*/) {
  return kResultNotFound;
}

std::int32_t KalVideoStatisticInfo::GetTxMediaInfo(void* buffer, bool reset) {
  return CopyOut(m_txBlock, buffer, [&](kalStore::st_KalVideoTxBlock& report) {
    if (!reset) return;
    reportInterval(report);
    report.noiseLevel = relaxed::Exchange(m_txBlock.noiseLevel, kNoNoise);
  });
}

std::int32_t KalVideoStatisticInfo::GetRxMediaInfo(void* /*buffer*/, bool /*reset*/) {
  return kResultNotFound;
}

void KalVideoStatisticInfo::reset(std::uint32_t callId) {
  kalStore::st_KalVideoTxBlock initial{};
  initial.noiseLevel = kNoNoise;
  relaxed::StoreBlock(m_txBlock, initial);
  relaxed::ClearBlocks(m_snapshots);
  relaxed::StoreBlock(m_rxBlock, {});
  relaxed::Store(m_callId, callId);
}

void KalVideoStatisticInfo::resetTxVideoStatisticInfo() {
  relaxed::StoreBlock(m_txBlock, {});
  relaxed::ClearBlocks(m_snapshots);
}

std::uint32_t KalVideoStatisticInfo::GetCallId() {
  return relaxed::Load(m_callId);
}

void KalVideoStatisticInfo::UpdateVideoEncBitrateFps(std::uint32_t bitrate, std::uint32_t bitrate2,
                                                     float fps) {
  relaxed::Store(m_txBlock.encoderBitrate, static_cast<float>(bitrate));
  relaxed::Store(m_txBlock.encoderBitrate2, static_cast<float>(bitrate2));
  relaxed::Store(m_txBlock.encoderFps, fps);
}

void KalVideoStatisticInfo::UpdateVideoEncFSAndDownType(std::uint32_t frameSize, std::uint32_t frameSize2,
                                                        kal::KalVideoResDownType downType) {
  relaxed::Store(m_txBlock.frameSize, frameSize);
  relaxed::Store(m_txBlock.frameSize2, frameSize2);
  relaxed::Store(m_txBlock.downType, downType);
}

void KalVideoStatisticInfo::UpdatePerformanceWarnCnt(std::int32_t count) {
  relaxed::Store(m_txBlock.performanceWarnings, count);
}

void KalVideoStatisticInfo::UpdateNoiseLevel(std::int32_t level) {
  relaxed::StoreIf(m_txBlock.noiseLevel, level, std::greater<>());
}

void KalVideoStatisticInfo::UpdateEncROIAreaRation(std::uint32_t ratio) {
  relaxed::Store(m_txBlock.roiAreaRatio, ratio);
}

void KalVideoStatisticInfo::UpdateVideoEncResolution(std::uint32_t packed) {
  relaxed::Store(m_txBlock.encodedWidth, packed & 0xFFFF);
  relaxed::Store(m_txBlock.encodedHeight, packed >> 16);
}

void KalVideoStatisticInfo::UpdateVideoEnableHWEnc(bool enabled) {
  relaxed::Store(m_txBlock.hardwareEncoder, enabled);
}

void KalVideoStatisticInfo::UpdateVideoProcessInfo(std::int32_t first, std::int32_t second) {
  relaxed::Store(m_txBlock.process1, first);
  relaxed::Store(m_txBlock.process2, second);
}

void KalVideoStatisticInfo::UpdateAV1Metrics(std::int32_t value, const char* name1, const char* name2) {
  relaxed::Store(m_txBlock.av1Metric, value);
  StoreString(m_txBlock.av1Name1, name1);
  StoreString(m_txBlock.av1Name2, name2);
}

void KalVideoStatisticInfo::UpdateEncodeParam(std::int32_t streamCount, kal::KalVideoCodecType codec) {
  relaxed::Store(m_txBlock.activeStreams, streamCount);
  relaxed::Store(m_txBlock.codecCode, kalStore::mapToKALCodec(codec));
}

void KalVideoStatisticInfo::UpdateVideoEncFrameCnt(std::uint32_t count) {
  relaxed::Store(m_txBlock.encodedFrames, count);
}

void KalVideoStatisticInfo::UpdateVideoCapturedFrameCnt(std::uint32_t count) {
  relaxed::Store(m_txBlock.capturedFrames, count);
}

void KalVideoStatisticInfo::UpdateVideoFeedToEncoderFramesCnt(std::uint32_t count) {
  relaxed::Store(m_txBlock.framesFedToEncoder, count);
}

void KalVideoStatisticInfo::UpdateVideoEncOtherInfo(float other1, float other2, std::uint32_t other3,
                                                    kal::KalVideoCodecType codec, unsigned long other5,
                                                    std::int32_t other6, std::uint32_t other7) {
  relaxed::Store(m_txBlock.other1, other1);
  relaxed::Store(m_txBlock.other2, other2);
  relaxed::Store(m_txBlock.other3, other3);
  relaxed::Store(m_txBlock.codecCode, kalStore::mapToKALCodec(codec));
  relaxed::Store(m_txBlock.other5, other5);
  relaxed::Store(m_txBlock.other6, other6);
  relaxed::Store(m_txBlock.other7, other7);
}

std::uint32_t KalVideoStatisticInfo::AddRef() {
  return AddReference();
}

std::uint32_t KalVideoStatisticInfo::Release() {
  return kalStore::internal::CallForCaller([this] { return ReleaseReference(); });
}

std::uint32_t KalVideoStatisticInfo::GetReference() {
  return ReferenceCount();
}

std::int32_t KalVideoStatisticInfo::QueryInterface(const kal::_tagUUID& iid, void** ppv) {
  return kalStore::internal::QueryStatisticsInterface(*this, iid, ppv);
}
