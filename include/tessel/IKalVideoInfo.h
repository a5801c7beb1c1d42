// SPDX-License-Identifier: Apache-2.0
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
/// `configChanges` and `idrReasons`. It takes the layers' interval members and leaves 0 in them, and takes
/// the noise level and leaves -1.
///
/// A setter assigns the members that its comment names, and cannot fail. A layer index outside 0 to 5 touches
/// no layer. Of a count above 6 the first six layers are written. Nothing is copied from a null array. The
/// plain numbers of such a call are stored all the same. Arrays are read only during the call.
///
/// @par Example
/// @code{.cpp}
/// const StatsRef<VideoStats> statistics(7);
/// st_KalVideoStreamStatInfo streams[2]{};
/// streams[1].counter = 40;
/// statistics->UpdateEncodeParam(2, kal::KAL_VIDEO_CODEC_CODE_104);
/// statistics->UpdateOneVideoLayerInfo(streams, 1, false, 250);
/// statistics->UpdateVideoEncResolution(360U << 16 | 640U);
///
/// st_KalVideoTxBlock block;
/// assert(statistics->GetTxMediaInfo(&block, true) == kResultOk);
/// assert(block.encodedWidth == 640 && block.encodedFrames == 250 && block.codecCode == 104);
/// assert(block.layer[1].counterDelta == 40);
///
/// streams[1].counter = 70;
/// statistics->UpdateOneVideoLayerInfo(streams, 1, false, 260);
/// statistics->GetTxMediaInfo(&block, true);
/// assert(block.layer[1].counter == 70 && block.layer[1].counterDelta == 30);
/// @endcode
class TESSEL_API IKalVideoInfo : public IKalMediaInfo {
 public:
  /// `encoderBitrate`, `encoderBitrate2` (converted to float), `encoderFps`.
  /// @param bitrate  bits per second
  /// @param bitrate2  bits per second
  /// @param fps  frames per second
  virtual void UpdateVideoEncBitrateFps(std::uint32_t bitrate, std::uint32_t bitrate2, float fps) = 0;
  /// `frameSize`, `frameSize2`, `downType`.
  /// @param downType  how pictures are scaled down, any
  virtual void UpdateVideoEncFSAndDownType(std::uint32_t frameSize, std::uint32_t frameSize2,
                                           kal::KalVideoResDownType downType) = 0;
  /// `performanceWarnings`.
  virtual void UpdatePerformanceWarnCnt(std::int32_t count) = 0;
  /// Raises `noiseLevel`; a lower level than the stored one changes nothing.
  /// @param level  a bare number; -1 is none
  virtual void UpdateNoiseLevel(std::int32_t level) = 0;
  /// `roiAreaRatio`.
  /// @param ratio  share of the picture that is region of interest
  virtual void UpdateEncROIAreaRation(std::uint32_t ratio) = 0;
  /// `encodedWidth` from the low 16 bits, `encodedHeight` from the high 16 bits.
  /// @param packed  width and height in pixels, 0 to 65535 each
  virtual void UpdateVideoEncResolution(std::uint32_t packed) = 0;
  /// `hardwareEncoder`.
  /// @param enabled  whether a hardware encoder is in use
  virtual void UpdateVideoEnableHWEnc(bool enabled) = 0;
  /// `targetFps` of layers 0 to count-1.
  /// @param fps  frames per second; at least `count` elements, null: nothing is copied
  /// @param count  number of layers, 1 to 6; any other changes nothing
  virtual void UpdateEncodeControlTargetFps(float* fps, std::int32_t count) = 0;
  /// `process1`, `process2`.
  virtual void UpdateVideoProcessInfo(std::int32_t first, std::int32_t second) = 0;
  /// Zeroes the Tx block, the noise level included, and forgets what was reported last; the call id stays.
  virtual void resetTxVideoStatisticInfo() = 0;
  /// `av1Metric`, `av1Name1`, `av1Name2`.
  /// @param name1  the first 15 characters are stored; null is ""
  /// @param name2  the first 63 characters are stored; null is ""
  virtual void UpdateAV1Metrics(std::int32_t value, const char* name1, const char* name2) = 0;
  /// `idrRequests` of the block, and of layer `index` from streams[index]; with `all`, of layers 0 to
  /// index-1.
  /// @param count  IDR frames asked for, all layers
  /// @param streams  at least `index` + 1 elements, with `all` `index`; null: nothing is copied
  /// @param index  0 to 5; with `all` a count, 0 to 6
  /// @param all  whether all layers below `index` are updated
  virtual void UpdateVideoEncIdrReqNum(std::uint32_t count, st_KalVideoStreamStatInfo* streams,
                                       std::int32_t index, bool all) = 0;
  /// `idrSent` of the block, and `idrSent` and `idrReasons` of layer `index` from streams[index].
  /// @param count  IDR frames sent, all layers
  /// @param streams  at least `index` + 1 elements; null: nothing is copied
  /// @param index  0 to 5
  virtual void UpdateVideoEncIdrSentAndReasonCnt(std::uint32_t count, st_KalVideoStreamStatInfo* streams,
                                                 std::int32_t index) = 0;
  /// `bufferOccupancy` of layer `index` from values[index].
  /// @param values  how full the frame buffers are, as measured; at least `index` + 1 elements, null: nothing
  /// is copied
  /// @param index  0 to 5
  virtual void UpdateFBufferOcuppiedVideo(float* values, std::uint32_t index) = 0;
  /// `profile` of layers 0 to count-1 from the elements of `profiles`.
  /// @param profiles  codec profiles; at least `count` elements, null: nothing is copied
  /// @param count  number of layers, 0 to 6
  virtual void UpdateProfile(std::uint32_t* profiles, std::int32_t count) = 0;
  /// `activeStreams`, and `codecCode` through mapToKALCodec().
  /// @param streamCount  streams in use, stored as given
  virtual void UpdateEncodeParam(std::int32_t streamCount, kal::KalVideoCodecType codec) = 0;
  /// For layer `index` from streams[index]: all that UpdateStreamsInfo() copies of a stream, and the
  /// identifying words, codec, `counter`, `idrRequests` and `idrSent`; then `encodedFrames`. With `clear` the
  /// layer's interval members are then 0, and the next resetting read reports its counters in full.
  /// @param streams  at least `index` + 1 elements; null: nothing is copied
  /// @param index  0 to 5
  /// @param clear  starts a new interval for the layer
  virtual void UpdateOneVideoLayerInfo(st_KalVideoStreamStatInfo* streams, std::int32_t index, bool clear,
                                       std::uint32_t encodedFrames) = 0;
  /// `activeStreams`, and for layers 0 to count-1 the last two identifying words and the measured members of
  /// the elements of `streams`, with the interval's minimum, maximum and last value.
  /// @param streams  at least `count` elements; null: nothing is copied
  /// @param count  streams in use, 0 to 6; stored as given
  virtual void UpdateStreamsInfo(st_KalVideoStreamStatInfo* streams, std::int32_t count) = 0;
  /// `configChanges` of layers 0 to count-1 from the elements of `streams`.
  /// @param streams  at least `count` elements; null: nothing is copied
  /// @param count  number of layers, 0 to 6
  virtual void UpdateVideoConfigureChange(st_KalVideoStreamStatInfo* streams, std::int32_t count) = 0;
  /// `encodedFrames`.
  virtual void UpdateVideoEncFrameCnt(std::uint32_t count) = 0;
  /// `capturedFrames`.
  virtual void UpdateVideoCapturedFrameCnt(std::uint32_t count) = 0;
  /// `framesFedToEncoder`.
  virtual void UpdateVideoFeedToEncoderFramesCnt(std::uint32_t count) = 0;
  /// `other1`, `other2`, `other3`, `codecCode` through mapToKALCodec(), `other5`, `other6`, `other7`.
  /// @param other5  has 32 bits where a `long` has
  virtual void UpdateVideoEncOtherInfo(float other1, float other2, std::uint32_t other3,
                                       kal::KalVideoCodecType codec, unsigned long other5,
                                       std::int32_t other6, std::uint32_t other7) = 0;

 protected:
  st_KalVideoTxBlock m_txBlock{};  ///< what GetTxMediaInfo() copies
  st_KalVideoTxBlock m_rxBlock{};  ///< of the same layout; nothing is measured of received video yet
};

}  // namespace kalStore
