// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "tessel/KalConfigGroup.h"

namespace kalStore::internal {

/// All groups in the byte order of their names: the order of a settings document's members, for export and
/// import.
const std::array<KalConfigGroup, KAL_CONFIG_GROUP_LAST>& GroupsByName();

}  // namespace kalStore::internal
