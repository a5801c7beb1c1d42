// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/ResultCode.h"
#include "tessel/export.h"

namespace kalStore {

/// The statistics of one call and one kind of media. The components that measure write them; the component
/// that reports reads them as raw blocks (see StatisticsBlocks.h).
///
/// Buffers are the caller's, of any alignment, and at least as large as the block.
///
/// @threads Any operation, from any thread, without a lock. Each number is written and read at once: a read
/// beside a write sees it old or new, and may see old and new numbers in one block. Two kinds of members are
/// written in parts, and a read beside a write may see parts of two values: an st_KalUInt64, in its two
/// halves, and a string, character by character. A resetting read takes and resets each number at once: what
/// is written beside it is in this report or in the next one, and of two resetting readers one gets it.
/// @lifetime Obtained from createTesselEntity(); shared by reference counting.
/// @par Example
/// @code{.cpp}
/// const StatsRef<VideoStats> statistics(7);
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
  /// @return kResultOk; kResultNotFound when `buffer` is null.
  virtual std::int32_t UpdateTxMediaInfo(void* buffer) = 0;
  /// Not supported; touches nothing.
  /// @param buffer  any
  /// @return kResultNotFound.
  virtual std::int32_t UpdateRxMediaInfo(void* buffer) = 0;
  /// Copies the whole Tx block.
  /// @param buffer  receives the block: st_KalVideoTxBlock or st_KalAudioBlock
  /// @param reset  ends an interval: the members of the interval begin again, see IKalVideoInfo and
  /// IKalAudioInfo
  /// @return kResultOk; kResultNotFound when `buffer` is null.
  virtual std::int32_t GetTxMediaInfo(void* buffer, bool reset) = 0;
  /// Touches nothing; received audio is read per stream with IKalAudioInfo::GetRxAudioInfo().
  /// @param buffer  any
  /// @param reset  any
  /// @return Video: kResultNotFound, not supported. Audio: kResultOk.
  virtual std::int32_t GetRxMediaInfo(void* buffer, bool reset) = 0;
  /// Sets the call id, and all blocks as in a new object.
  /// @param callId  the call's, any
  virtual void reset(std::uint32_t callId) = 0;
  /// @return The call's id.
  virtual std::uint32_t GetCallId() = 0;

 protected:
  /// The call's id. The state begins here and continues in the media's own interface: its place in the object
  /// does not depend on the class that implements the operations.
  std::uint32_t m_callId = kNoCallId;
};

}  // namespace kalStore
