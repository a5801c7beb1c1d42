// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/IKalMediaInfo.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/export.h"

namespace kalStore {

/// The sent audio of one call and its received streams, 0 to 19. The Tx block and each stream's Rx block are
/// an st_KalAudioBlock, 260 bytes.
///
/// A resetting GetTxMediaInfo() takes the levels of the interval: it leaves -100 in the noise and speech
/// levels, 0 in the last two AEC levels, and 20 in `stat112`.
///
/// A setter assigns the members that its comment names, and cannot fail. A stream index outside 0 to 19
/// changes nothing.
///
/// @par Example
/// @code{.cpp}
/// const StatsRef<AudioStats> statistics(7);
/// statistics->updateTxBitRate(32000);
/// statistics->updateSpeechLevel(-30, -35, -28);
/// statistics->updateRxBitRate(2, 24000);
///
/// st_KalAudioBlock sent;
/// assert(statistics->GetTxMediaInfo(&sent, true) == kResultOk);
/// assert(sent.bitrate == 32000 && sent.speechLevel[2] == -28);
/// statistics->GetTxMediaInfo(&sent, false);
/// assert(sent.speechLevel[2] == -100);  // of the interval that has just begun
///
/// st_KalAudioBlock received;
/// assert(statistics->GetRxAudioInfo(&received, 2, false) == kResultOk && received.bitrate == 24000);
/// assert(statistics->GetRxAudioInfo(&received, 20, false) == kResultNotFound);
/// @endcode
class TESSEL_API IKalAudioInfo : public IKalMediaInfo {
 public:
  /// Tx `codecStat0`, `stat4`, `encodeDropMs`, `codecStat16`, `codecStat24`, and `codecCode` from the payload
  /// type.
  virtual void updateSendCodecInfo(st_KalAudioCodecStatisticsInfo& codec) = 0;
  /// Tx `bitrate`.
  /// @param bitrate  bits per second
  virtual void updateTxBitRate(std::uint32_t bitrate) = 0;
  /// Rx `bitrate`.
  /// @param bitrate  bits per second
  virtual void updateRxBitRate(std::int32_t stream, std::uint32_t bitrate) = 0;
  /// Tx `unstableEvents`.
  virtual void updateUnstableEventCount(std::uint32_t count) = 0;
  /// Tx `aecLevel`, in the order of the arguments.
  /// @param first  element 0, decibels
  /// @param second  element 1, decibels
  /// @param third  element 2, decibels
  virtual void updateAECLevel(float first, float second, float third) = 0;
  /// Tx `noiseLevel`, in the order of the arguments.
  /// @param first  element 0, decibels; -100 is none
  /// @param second  element 1, decibels; -100 is none
  /// @param third  element 2, decibels; -100 is none
  virtual void updateNoiseLevel(float first, float second, float third) = 0;
  /// Tx `speechLevel`, in the order of the arguments.
  /// @param first  element 0, decibels; -100 is none
  /// @param second  element 1, decibels; -100 is none
  /// @param third  element 2, decibels; -100 is none
  virtual void updateSpeechLevel(float first, float second, float third) = 0;
  /// Rx `codecCode`; a payload type without a codec code leaves it as it is.
  virtual void updatePayloadType(std::int32_t stream, KAL_AUDIO_PAYLOAD_TYPE payloadType) = 0;
  /// Rx `lbrrFlag` and `stat4`.
  /// @param lbrr  whether low bit-rate redundancy is on
  virtual void updateDecodeInfo(std::int32_t stream, bool lbrr, std::uint32_t stat4) = 0;
  /// Rx `jitterStat8` to `jitterStat48` and `stat112` from `jitter`; `jitterBytes` from the numbers.
  /// @param jitter1  a bare number, of which the low 8 bits are stored
  /// @param jitter2  a bare number, of which the low 8 bits are stored
  virtual void updateJitterBufferStatistics(std::int32_t stream, st_KalAudioJitterBufferStatistics& jitter,
                                            std::int32_t jitter1, std::int32_t jitter2) = 0;
  /// Rx `e2eDelay`, in the order of the arguments.
  /// @param first  element 0, milliseconds
  /// @param second  element 1, milliseconds
  /// @param third  element 2, milliseconds
  virtual void updateE2EDelayInfo(std::int32_t stream, std::uint32_t first, std::uint32_t second,
                                  std::uint32_t third) = 0;
  /// Rx `lbrrFlag`.
  /// @param lbrr  whether low bit-rate redundancy is on
  virtual void updateCodecStaticsLBRRflag(std::int32_t stream, bool lbrr) = 0;
  /// Tx `lbrrFlag`: the first byte of `codecStat0` alone.
  /// @param lbrr  whether low bit-rate redundancy is on
  virtual void updateCodecStaticsLBRRflag(bool lbrr) = 0;
  /// Tx `encodeDropMs`.
  /// @param milliseconds  of audio that the encoder dropped
  virtual void updateTxEncodeDropFrameinMS(std::uint32_t milliseconds) = 0;
  /// The stream's A/V-sync record.
  virtual void updateAVSyncStatistics(std::int32_t stream, kal::_tagSyncStatistics& sync) = 0;
  /// Copies a stream's Rx block.
  /// @param buffer  receives the st_KalAudioBlock, 260 bytes
  /// @param stream  0 to 19
  /// @param reset  takes the stream's `jitterStat12`, `jitterStat8` and `jitterStat16`, and leaves 0 in them
  /// @return kResultOk; kResultNotFound when `buffer` is null or there is no such stream, with nothing
  /// copied.
  virtual std::int32_t GetRxAudioInfo(void* buffer, std::int32_t stream, bool reset) = 0;
  /// Copies a stream's A/V-sync record.
  /// @param buffer  receives the kal::_tagSyncStatistics, 120 bytes
  /// @param stream  0 to 19
  /// @return kResultOk; kResultNotFound when `buffer` is null or there is no such stream, with nothing
  /// copied.
  virtual std::int32_t GetAVSyncInfo(void* buffer, std::int32_t stream) = 0;
};

}  // namespace kalStore
