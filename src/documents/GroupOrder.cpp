// SPDX-License-Identifier: Apache-2.0
#include "documents/GroupOrder.h"

#include <algorithm>
#include <cstddef>

namespace kalStore::internal {

const std::array<KalConfigGroup, KAL_CONFIG_GROUP_LAST>& GroupsByName() {
  static const auto groups = [] {
    std::array<KalConfigGroup, KAL_CONFIG_GROUP_LAST> all{};
    for (std::size_t group = 0; group < all.size(); ++group) all[group] = static_cast<KalConfigGroup>(group);
    std::ranges::sort(all, {}, KalConfigGroup2GroupName);
    return all;
  }();
  return groups;
}

}  // namespace kalStore::internal
