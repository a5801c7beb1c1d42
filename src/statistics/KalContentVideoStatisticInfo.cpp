// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalContentVideoStatisticInfo.h"

KalContentVideoStatisticInfo::~KalContentVideoStatisticInfo() = default;
