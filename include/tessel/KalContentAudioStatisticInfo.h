// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/KalAudioStatisticInfo.h"
#include "tessel/export.h"

/// The audio statistics of a call's shared content.
class TESSEL_API KalContentAudioStatisticInfo : public KalAudioStatisticInfo {
 public:
  using KalAudioStatisticInfo::KalAudioStatisticInfo;
  ~KalContentAudioStatisticInfo() override;
};

namespace kalStore {
using ::KalContentAudioStatisticInfo;
}
