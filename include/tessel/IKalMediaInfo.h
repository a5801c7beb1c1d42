#pragma once

#include <cstdint>

#include "tessel/ResultCode.h"
#include "tessel/export.h"

namespace kalStore {

/// The statistics of one call and one kind of media, written by the components that measure and read as raw
/// blocks by the one that reports (see StatisticsBlocks.h).
///
/// Buffers are the caller's, of any alignment, and at least as large as the block.
///
/// @threads Any operation, from any thread, without a lock. Members are written and read one by one: a read
/// beside a write sees each member either old or new, and may see some of each.
/// @lifetime Obtained from createTesselEntity(); shared by reference counting.
/// @par Example
/// @code{.cpp}
/// const StatsRef<Video> statistics(7);
/// IKalMediaInfo& info = *statistics;
/// assert(info.GetCallId() == 7);
/// st_KalVideoTxBlock block{};
/// block.encodedFrames = 250;
/// assert(info.UpdateTxMediaInfo(&block) == kResultOk);
/// info.reset(8);
/// assert(info.GetTxMediaInfo(&block, false) == kResultOk && block.encodedFrames == 0);
/// assert(info.GetCallId() == 8);
/// assert(info.GetTxMediaInfo(nullptr, false) == kResultNotFound);
/// @endcode
class TESSEL_API IKalMediaInfo {
 public:
  virtual ~IKalMediaInfo() = default;

  /// Replaces the whole Tx block.
  /// @param buffer  the new block: st_KalVideoTxBlock or st_KalAudioBlock
  /// @return 0; 0x46004001 when `buffer` is null.
  virtual std::int32_t UpdateTxMediaInfo(void* buffer) = 0;
  /// Not supported; touches nothing.
  /// @param buffer  any
  /// @return 0x46004001.
  virtual std::int32_t UpdateRxMediaInfo(void* buffer) = 0;
  /// Copies the whole Tx block.
  /// @param buffer  receives the block: st_KalVideoTxBlock or st_KalAudioBlock
  /// @param reset  ends an interval: what the block says of one starts anew, see IKalVideoInfo and
  /// IKalAudioInfo
  /// @return 0; 0x46004001 when `buffer` is null.
  virtual std::int32_t GetTxMediaInfo(void* buffer, bool reset) = 0;
  /// Touches nothing; received audio is read per stream with IKalAudioInfo::GetRxAudioInfo().
  /// @param buffer  any
  /// @param reset  any
  /// @return Video: 0x46004001, not supported. Audio: 0.
  virtual std::int32_t GetRxMediaInfo(void* buffer, bool reset) = 0;
  /// Starts anew: blocks as in a new object.
  /// @param callId  the call's, any
  virtual void reset(std::uint32_t callId) = 0;
  /// @return The call's id.
  virtual std::uint32_t GetCallId() = 0;

 protected:
  /// The call's id. The state begins here, and continues in the media's own interface, so that its place in
  /// the object does not depend on the class that implements the operations.
  std::uint32_t m_callId = kNoCallId;
};

}  // namespace kalStore
