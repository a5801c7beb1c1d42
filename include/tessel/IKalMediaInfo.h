#pragma once

#include <cstdint>

#include "tessel/ResultCode.h"
#include "tessel/export.h"

namespace kalStore {

/// The statistics of one call and one kind of media, written by the components that measure and read as raw
/// blocks by the one that reports (see StatisticsBlocks.h).
///
/// Threads: any operation, from any thread, without a lock. Members are written and read one by one: a read
/// beside a write sees each member either old or new, and may see some of each.
/// Lifetime: obtained from createTesselEntity(); shared by reference counting.
/// Buffers are the caller's, of any alignment, and at least as large as the block.
class TESSEL_API IKalMediaInfo {
 public:
  virtual ~IKalMediaInfo() = default;

  /// Replaces the whole Tx block by the one in `buffer`: 0. `buffer` null: 0x46004001.
  virtual std::int32_t UpdateTxMediaInfo(void* buffer) = 0;
  /// Not supported: 0x46004001, nothing is touched.
  virtual std::int32_t UpdateRxMediaInfo(void* buffer) = 0;
  /// Copies the whole Tx block to `buffer`: 0. `buffer` null: 0x46004001. With `reset` an interval ends: what
  /// the block says of an interval starts anew, see IKalVideoInfo and IKalAudioInfo.
  virtual std::int32_t GetTxMediaInfo(void* buffer, bool reset) = 0;
  /// Touches nothing. Video: not supported, 0x46004001. Audio: 0; read per stream with GetRxAudioInfo().
  virtual std::int32_t GetRxMediaInfo(void* buffer, bool reset) = 0;
  /// Starts anew for the call `callId`: blocks as in a new object.
  virtual void reset(std::uint32_t callId) = 0;
  virtual std::uint32_t GetCallId() = 0;

 protected:
  // The state begins here, and continues in the media's own interface, so that its place in the object does
  // not depend on the class that implements the operations.
  std::uint32_t m_callId = kNoCallId;
};

}  // namespace kalStore
