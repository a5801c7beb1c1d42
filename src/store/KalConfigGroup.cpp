// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigGroup.h"

#include <algorithm>
#include <iterator>

namespace kalStore {
namespace {

constexpr const char* kGroupNames[] = {"Common",       "Feature",    "Metrics",     "Audio",     "AudioSlide",
                                       "Video",        "VideoSlide", "Application", "Gamestate", "AudioSi",
                                       "Transmission", "TAOnly",     "UnitTest"};
static_assert(std::size(kGroupNames) == KAL_CONFIG_GROUP_LAST);

}  // namespace

std::string KalConfigGroup2GroupName(KalConfigGroup group) {
  if (IsConfigGroup(group)) return kGroupNames[group];
  return group == KAL_CONFIG_GROUP_LAST ? "LastGroup" : "Undefined_Group";
}

KalConfigGroup GroupName2KalConfigGroup(const std::string& name) {
  const auto found = std::find(std::begin(kGroupNames), std::end(kGroupNames), name);
  return static_cast<KalConfigGroup>(found - std::begin(kGroupNames));
}

}  // namespace kalStore
