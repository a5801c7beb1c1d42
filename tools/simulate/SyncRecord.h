// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/StatisticsBlocks.h"

/// What the video receiver writes in the words of a call's synchronisation record.
namespace simulate {

enum SyncWord {
  kSyncVideoBitrate,  ///< bit/s, received
  kSyncVideoFps,      ///< Frames per second, received, in hundredths.
  kSyncVideoPackets,  ///< Received since the start.
  kSyncVideoLost,     ///< Lost since the start.
  kSyncVideoDelayMs,  ///< What video waits so that lips and voice go together.
};

}  // namespace simulate
