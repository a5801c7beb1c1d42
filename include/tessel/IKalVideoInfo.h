#pragma once

#include <cstdint>

#include "tessel/IKalMediaInfo.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/export.h"

namespace kalStore {

/// The sent video of one call. The Tx block is an st_KalVideoTxBlock, 2064 bytes.
///
/// A resetting GetTxMediaInfo() reports for each layer below the stream count what happened since the
/// previous one: `counterDelta` and `idrRequestsDelta` (the counters themselves stay cumulative),
/// `configChanges` and `idrReasons`. It then zeroes the layers' interval members and sets the noise level to
/// -1.
///
/// Setters assign the members named; they cannot fail. A layer index outside 0 to 5 touches no layer, and of
/// a count above 6 the first six layers are taken; from an array that is null nothing is copied. The plain
/// numbers of such a call are stored all the same. Arrays are read during the call alone.
class TESSEL_API IKalVideoInfo : public IKalMediaInfo {
 public:
  /// `encoderBitrate`, `encoderBitrate2` (converted to float), `encoderFps`.
  virtual void UpdateVideoEncBitrateFps(std::uint32_t bitrate, std::uint32_t bitrate2, float fps) = 0;
  /// `frameSize`, `frameSize2`, `downType`.
  virtual void UpdateVideoEncFSAndDownType(std::uint32_t frameSize, std::uint32_t frameSize2,
                                           kal::KalVideoResDownType downType) = 0;
  /// `performanceWarnings`.
  virtual void UpdatePerformanceWarnCnt(std::int32_t count) = 0;
  /// Raises `noiseLevel`; a lower level than the stored one changes nothing.
  virtual void UpdateNoiseLevel(std::int32_t level) = 0;
  /// `roiAreaRatio`.
  virtual void UpdateEncROIAreaRation(std::uint32_t ratio) = 0;
  /// `encodedWidth` from the low 16 bits, `encodedHeight` from the high 16 bits.
  virtual void UpdateVideoEncResolution(std::uint32_t packed) = 0;
  /// `hardwareEncoder`.
  virtual void UpdateVideoEnableHWEnc(bool enabled) = 0;
  /// `targetFps` of layers 0 to count-1 from the elements of `fps`. Only for counts of 1 to 6.
  virtual void UpdateEncodeControlTargetFps(float* fps, std::int32_t count) = 0;
  /// `process1`, `process2`.
  virtual void UpdateVideoProcessInfo(std::int32_t first, std::int32_t second) = 0;
  /// Zeroes the Tx block and forgets what the previous resetting read reported; the call id stays.
  virtual void resetTxVideoStatisticInfo() = 0;
  /// `av1Metric`, `av1Name1` (cut to 15 characters), `av1Name2` (cut to 63); a null name gives the empty
  /// text.
  virtual void UpdateAV1Metrics(std::int32_t value, const char* name1, const char* name2) = 0;
  /// `idrRequests` of the block, and of layer `index` from streams[index]; with `all`, of layers 0 to
  /// index-1.
  virtual void UpdateVideoEncIdrReqNum(std::uint32_t count, st_KalVideoStreamStatInfo* streams,
                                       std::int32_t index, bool all) = 0;
  /// `idrSent` of the block, and `idrSent` and `idrReasons` of layer `index` from streams[index].
  virtual void UpdateVideoEncIdrSentAndReasonCnt(std::uint32_t count, st_KalVideoStreamStatInfo* streams,
                                                 std::int32_t index) = 0;
  /// `bufferOccupancy` of layer `index` from values[index].
  virtual void UpdateFBufferOcuppiedVideo(float* values, std::uint32_t index) = 0;
  /// `profile` of layers 0 to count-1 from the elements of `profiles`.
  virtual void UpdateProfile(std::uint32_t* profiles, std::int32_t count) = 0;
  /// `activeStreams`, and `codecCode` through mapToKALCodec().
  virtual void UpdateEncodeParam(std::int32_t streamCount, kal::KalVideoCodecType codec) = 0;
  /// All that UpdateStreamsInfo() takes of a stream, and its identifying words, codec, `counter`,
  /// `idrRequests` and `idrSent`, for layer `index` from streams[index]; then `encodedFrames`. `clear` then
  /// starts a new interval for the layer: its interval members become 0, and its counters are reported in
  /// full by the next reset.
  virtual void UpdateOneVideoLayerInfo(st_KalVideoStreamStatInfo* streams, std::int32_t index, bool clear,
                                       std::uint32_t encodedFrames) = 0;
  /// `activeStreams`, and for layers 0 to count-1 the last two identifying words and the measured members of
  /// the elements of `streams`, with the interval's minimum, maximum and last value.
  virtual void UpdateStreamsInfo(st_KalVideoStreamStatInfo* streams, std::int32_t count) = 0;
  /// `configChanges` of layers 0 to count-1 from the elements of `streams`.
  virtual void UpdateVideoConfigureChange(st_KalVideoStreamStatInfo* streams, std::int32_t count) = 0;
  /// `encodedFrames`.
  virtual void UpdateVideoEncFrameCnt(std::uint32_t count) = 0;
  /// `capturedFrames`.
  virtual void UpdateVideoCapturedFrameCnt(std::uint32_t count) = 0;
  /// `framesFedToEncoder`.
  virtual void UpdateVideoFeedToEncoderFramesCnt(std::uint32_t count) = 0;
  /// `other1`, `other2`, `other3`, `codecCode` through mapToKALCodec(), `other5`, `other6`, `other7`.
  virtual void UpdateVideoEncOtherInfo(float other1, float other2, std::uint32_t other3,
                                       kal::KalVideoCodecType codec, unsigned long other5,
                                       std::int32_t other6, std::uint32_t other7) = 0;

 protected:
  st_KalVideoTxBlock m_txBlock{};
  st_KalVideoTxBlock m_rxBlock{};  // Of the same layout; nothing is measured of received video yet.
};

}  // namespace kalStore
