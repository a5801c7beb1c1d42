#pragma once

#include "tessel/KalFeatureToggleID.h"

namespace kalStore {

/// The configuration key of a toggle, for ever valid; null for an id that is no toggle.
const char* FeatureToggleKey(KalFeatureToggleID id);

}  // namespace kalStore
