// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "tessel/KalConfigGroup.h"
#include "util/ConfigData.h"

namespace kalStore::internal {

class LiveRegistration;

/// What follows the values of one store, by group and name.
///
/// Threads: a group's part is changed under both g_liveMutex and the lock of the group's values; either of
/// them is enough to read it.
class LiveRegistrations {
 public:
  using Names = std::multimap<std::string, LiveRegistration*, std::less<>>;

  Names& NamesOf(KalConfigGroup group) { return m_groups[static_cast<std::size_t>(group)]; }

  /// Writes what is stored under the name from now on; null: nothing.
  void Write(KalConfigGroup group, std::string_view name, const ConfigData* stored) noexcept;
  /// The same when nothing is stored in the group any more.
  void WriteNothing(KalConfigGroup group) noexcept;

 private:
  std::array<Names, KAL_CONFIG_GROUP_LAST> m_groups;
};

}  // namespace kalStore::internal
