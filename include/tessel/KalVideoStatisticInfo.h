// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/IKalUnknown.h"
#include "tessel/IKalVideoInfo.h"
#include "tessel/StatisticsRegistration.h"
#include "tessel/export.h"

/// The video statistics of one call, created by createTesselEntity(). Operations: see IKalVideoInfo and
/// IKalUnknown.
class TESSEL_API KalVideoStatisticInfo : public kalStore::IKalVideoInfo,
                                         public kal::IKalUnknown,
                                         public kal::CKalUnknownImpl {
 public:
  /// All blocks are zero, except the noise level, -1. The reference count is 0: the first owner adds the
  /// first reference.
  /// @param callId  any
  explicit KalVideoStatisticInfo(std::uint32_t callId);
  ~KalVideoStatisticInfo() override;

  std::int32_t UpdateTxMediaInfo(void* buffer) override;
  std::int32_t UpdateRxMediaInfo(void* buffer) override;
  std::int32_t GetTxMediaInfo(void* buffer, bool reset) override;
  std::int32_t GetRxMediaInfo(void* buffer, bool reset) override;
  void reset(std::uint32_t callId) override;
  std::uint32_t GetCallId() override;

  void UpdateVideoEncBitrateFps(std::uint32_t bitrate, std::uint32_t bitrate2, float fps) override;
  void UpdateVideoEncFSAndDownType(std::uint32_t frameSize, std::uint32_t frameSize2,
                                   kal::KalVideoResDownType downType) override;
  void UpdatePerformanceWarnCnt(std::int32_t count) override;
  void UpdateNoiseLevel(std::int32_t level) override;
  void UpdateEncROIAreaRation(std::uint32_t ratio) override;
  void UpdateVideoEncResolution(std::uint32_t packed) override;
  void UpdateVideoEnableHWEnc(bool enabled) override;
  void UpdateEncodeControlTargetFps(float* fps, std::int32_t count) override;
  void UpdateVideoProcessInfo(std::int32_t first, std::int32_t second) override;
  void resetTxVideoStatisticInfo() override;
  void UpdateAV1Metrics(std::int32_t value, const char* name1, const char* name2) override;
  void UpdateVideoEncIdrReqNum(std::uint32_t count, kalStore::st_KalVideoStreamStatInfo* streams,
                               std::int32_t index, bool all) override;
  void UpdateVideoEncIdrSentAndReasonCnt(std::uint32_t count, kalStore::st_KalVideoStreamStatInfo* streams,
                                         std::int32_t index) override;
  void UpdateFBufferOcuppiedVideo(float* values, std::uint32_t index) override;
  void UpdateProfile(std::uint32_t* profiles, std::int32_t count) override;
  void UpdateEncodeParam(std::int32_t streamCount, kal::KalVideoCodecType codec) override;
  void UpdateOneVideoLayerInfo(kalStore::st_KalVideoStreamStatInfo* streams, std::int32_t index, bool clear,
                               std::uint32_t encodedFrames) override;
  void UpdateStreamsInfo(kalStore::st_KalVideoStreamStatInfo* streams, std::int32_t count) override;
  void UpdateVideoConfigureChange(kalStore::st_KalVideoStreamStatInfo* streams, std::int32_t count) override;
  void UpdateVideoEncFrameCnt(std::uint32_t count) override;
  void UpdateVideoCapturedFrameCnt(std::uint32_t count) override;
  void UpdateVideoFeedToEncoderFramesCnt(std::uint32_t count) override;
  void UpdateVideoEncOtherInfo(float other1, float other2, std::uint32_t other3, kal::KalVideoCodecType codec,
                               unsigned long other5, std::int32_t other6, std::uint32_t other7) override;

  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  std::uint32_t GetReference() override;
  std::int32_t QueryInterface(const kal::_tagUUID& iid, void** ppv) override;

 private:
  friend struct kalStore::internal::EntityParts;

  // A layer's counters as they were reported last.
  struct LayerSnapshot {
    std::uint32_t counter;
    std::uint32_t idrRequests;
    std::uint32_t configChanges;
    std::uint32_t idrReasons[11];
  };

  void reportInterval(kalStore::st_KalVideoTxBlock& report);
  void takeInterval(int index, kalStore::st_KalVideoLayer& out);

  LayerSnapshot m_snapshots[kalStore::kVideoLayerCount]{};
  kalStore::internal::Registration m_registration;
};

namespace kalStore {
using ::KalVideoStatisticInfo;
}
