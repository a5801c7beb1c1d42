#pragma once

#include <cstdint>

#include "tessel/IKalMediaInfo.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/export.h"

namespace kalStore {

/// The sent audio of one call and its received streams, 0 to 19. The Tx block and each stream's Rx block are
/// an st_KalAudioBlock, 260 bytes.
///
/// A resetting GetTxMediaInfo() sets the noise and speech levels to -100, the last two AEC levels to 0, and
/// `stat112` to 20, after it has copied the block.
///
/// Setters assign the members named; they cannot fail. A stream index outside 0 to 19 changes nothing.
class TESSEL_API IKalAudioInfo : public IKalMediaInfo {
 public:
  /// Tx `codecStat0`, `stat4`, `encodeDropMs`, `codecStat16`, `codecStat24`, and `codecCode` from the payload
  /// type.
  virtual void updateSendCodecInfo(st_KalAudioCodecStatisticsInfo& codec) = 0;
  /// Tx `bitrate`, bits per second.
  virtual void updateTxBitRate(std::uint32_t bitrate) = 0;
  /// Rx `bitrate`, bits per second.
  virtual void updateRxBitRate(std::int32_t stream, std::uint32_t bitrate) = 0;
  /// Tx `unstableEvents`.
  virtual void updateUnstableEventCount(std::uint32_t count) = 0;
  /// Tx `aecLevel`, in the order of the arguments.
  virtual void updateAECLevel(float first, float second, float third) = 0;
  /// Tx `noiseLevel`, in the order of the arguments.
  virtual void updateNoiseLevel(float first, float second, float third) = 0;
  /// Tx `speechLevel`, in the order of the arguments.
  virtual void updateSpeechLevel(float first, float second, float third) = 0;
  /// Rx `codecCode`; a type that stands for no codec leaves it as it is.
  virtual void updatePayloadType(std::int32_t stream, KAL_AUDIO_PAYLOAD_TYPE payloadType) = 0;
  /// Rx `lbrrFlag` and `stat4`.
  virtual void updateDecodeInfo(std::int32_t stream, bool lbrr, std::uint32_t stat4) = 0;
  /// Rx `jitterStat8` to `jitterStat48` and `stat112` from `jitter`; the low 8 bits of the numbers in
  /// `jitterBytes`.
  virtual void updateJitterBufferStatistics(std::int32_t stream, st_KalAudioJitterBufferStatistics& jitter,
                                            std::int32_t jitter1, std::int32_t jitter2) = 0;
  /// Rx `e2eDelay`, milliseconds, in the order of the arguments.
  virtual void updateE2EDelayInfo(std::int32_t stream, std::uint32_t first, std::uint32_t second,
                                  std::uint32_t third) = 0;
  /// Rx `lbrrFlag`.
  virtual void updateCodecStaticsLBRRflag(std::int32_t stream, bool lbrr) = 0;
  /// Tx `lbrrFlag`: the first byte of `codecStat0` alone.
  virtual void updateCodecStaticsLBRRflag(bool lbrr) = 0;
  /// Tx `encodeDropMs`, milliseconds.
  virtual void updateTxEncodeDropFrameinMS(std::uint32_t milliseconds) = 0;
  /// The stream's A/V-sync record.
  virtual void updateAVSyncStatistics(std::int32_t stream, kal::_tagSyncStatistics& sync) = 0;
  /// Copies the stream's Rx block to `buffer`: 0. `buffer` null or no such stream: 0x46004001, nothing
  /// copied. `reset` then zeroes the stream's `jitterStat12`, `jitterStat8` and `jitterStat16`.
  virtual std::int32_t GetRxAudioInfo(void* buffer, std::int32_t stream, bool reset) = 0;
  /// Copies the stream's kal::_tagSyncStatistics, 120 bytes, to `buffer`: 0. Errors as GetRxAudioInfo().
  virtual std::int32_t GetAVSyncInfo(void* buffer, std::int32_t stream) = 0;
};

}  // namespace kalStore
