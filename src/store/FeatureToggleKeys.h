// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/KalFeatureToggleID.h"

namespace kalStore::internal {

/// The configuration key of a toggle, always valid; null for an id that is no toggle.
const char* FeatureToggleKey(KalFeatureToggleID id);

}  // namespace kalStore::internal
