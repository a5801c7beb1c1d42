// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalContentAudioStatisticInfo.h"

KalContentAudioStatisticInfo::~KalContentAudioStatisticInfo() = default;
