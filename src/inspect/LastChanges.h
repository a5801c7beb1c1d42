// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tessel/inspect.h"

namespace kalStore::internal {

/// For each group the journal's next number when it was copied.
using CopyNumbers = std::array<std::uint64_t, KAL_CONFIG_GROUP_LAST>;

/// Looks through the journal, while it is on, for the change that gave each value. `settings` are those of
/// one call, by group and name.
void FindLastChanges(std::uint32_t callId, const CopyNumbers& numbers,
                     std::vector<InspectedSetting>& settings);

}  // namespace kalStore::internal
