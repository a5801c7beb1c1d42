// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/KalVideoStatisticInfo.h"
#include "tessel/export.h"

/// The video statistics of a call's shared content.
class TESSEL_API KalContentVideoStatisticInfo : public KalVideoStatisticInfo {
 public:
  using KalVideoStatisticInfo::KalVideoStatisticInfo;
  ~KalContentVideoStatisticInfo() override;
};

namespace kalStore {
using ::KalContentVideoStatisticInfo;
}
