// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalUnknown.h"
#include "tessel/StatisticsRegistration.h"
#include "tessel/export.h"

/// The audio statistics of one call, created by createTesselEntity(). Operations: see IKalAudioInfo and
/// IKalUnknown.
class TESSEL_API KalAudioStatisticInfo : public kalStore::IKalAudioInfo,
                                         public kal::IKalUnknown,
                                         public kal::CKalUnknownImpl {
 public:
  /// All blocks are zero, except the Tx noise and speech levels, -100, and `stat112`, 20. The reference count
  /// is 0: the first owner adds the first reference.
  /// @param callId  any
  explicit KalAudioStatisticInfo(std::uint32_t callId);
  ~KalAudioStatisticInfo() override;

  std::int32_t UpdateTxMediaInfo(void* buffer) override;
  std::int32_t UpdateRxMediaInfo(void* buffer) override;
  std::int32_t GetTxMediaInfo(void* buffer, bool reset) override;
  std::int32_t GetRxMediaInfo(void* buffer, bool reset) override;
  void reset(std::uint32_t callId) override;
  std::uint32_t GetCallId() override;

  void updateSendCodecInfo(kalStore::st_KalAudioCodecStatisticsInfo& codec) override;
  void updateTxBitRate(std::uint32_t bitrate) override;
  void updateRxBitRate(std::int32_t stream, std::uint32_t bitrate) override;
  void updateUnstableEventCount(std::uint32_t count) override;
  void updateAECLevel(float first, float second, float third) override;
  void updateNoiseLevel(float first, float second, float third) override;
  void updateSpeechLevel(float first, float second, float third) override;
  void updatePayloadType(std::int32_t stream, kalStore::KAL_AUDIO_PAYLOAD_TYPE payloadType) override;
  void updateDecodeInfo(std::int32_t stream, bool lbrr, std::uint32_t stat4) override;
  void updateJitterBufferStatistics(std::int32_t stream, kalStore::st_KalAudioJitterBufferStatistics& jitter,
                                    std::int32_t jitter1, std::int32_t jitter2) override;
  void updateE2EDelayInfo(std::int32_t stream, std::uint32_t first, std::uint32_t second,
                          std::uint32_t third) override;
  void updateCodecStaticsLBRRflag(std::int32_t stream, bool lbrr) override;
  void updateCodecStaticsLBRRflag(bool lbrr) override;
  void updateTxEncodeDropFrameinMS(std::uint32_t milliseconds) override;
  void updateAVSyncStatistics(std::int32_t stream, kal::_tagSyncStatistics& sync) override;
  std::int32_t GetRxAudioInfo(void* buffer, std::int32_t stream, bool reset) override;
  std::int32_t GetAVSyncInfo(void* buffer, std::int32_t stream) override;

  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  std::uint32_t GetReference() override;
  std::int32_t QueryInterface(const kal::_tagUUID& iid, void** ppv) override;

 private:
  friend struct kalStore::internal::EntityParts;

  kalStore::st_KalAudioBlock m_txBlock{};
  kalStore::st_KalAudioBlock m_rxBlocks[kalStore::kAudioStreamCount]{};
  kal::_tagSyncStatistics m_syncRecords[kalStore::kAudioStreamCount]{};
  kalStore::internal::Registration m_registration;
};

namespace kalStore {
using ::KalAudioStatisticInfo;
}
