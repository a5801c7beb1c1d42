// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

#include "tessel/KalConfigGroup.h"
#include "tessel/KalSessionType.h"

namespace kalStore::internal {

/// A row of the table.
struct SessionGroup {
  kal::KalSessionType sessionType;
  KalConfigGroup group;
};

inline constexpr SessionGroup kSessionGroups[] = {
    {kal::KAL_SESSION_AUDIO, KAL_CONFIG_GROUP_AUDIO},
    {kal::KAL_SESSION_VIDEO, KAL_CONFIG_GROUP_VIDEO},
    {kal::KAL_SESSION_VIDEO_SLIDE, KAL_CONFIG_GROUP_VIDEO_SLIDE},
    {kal::KAL_SESSION_AUDIO_SLIDE, KAL_CONFIG_GROUP_AUDIO_SLIDE},
    {kal::KAL_SESSION_APPLICATION, KAL_CONFIG_GROUP_APPLICATION},
    {kal::KAL_SESSION_GAMESTATE, KAL_CONFIG_GROUP_GAMESTATE},
    {kal::KAL_SESSION_AUDIO_SI, KAL_CONFIG_GROUP_AUDIO_SI},
};

/// The group of a session type; KAL_CONFIG_GROUP_DEFAULT when it has none.
KalConfigGroup GroupOfSessionType(kal::KalSessionType sessionType);

/// The rows by group, for each delivery to look up.
inline constexpr auto kSessionTypes = [] {
  std::array<kal::KalSessionType, KAL_CONFIG_GROUP_LAST> types{};
  types.fill(kal::KAL_SESSION_NONE);
  for (const SessionGroup& row : kSessionGroups) types[row.group] = row.sessionType;
  return types;
}();

/// The session type of a group, the inverse; KAL_SESSION_NONE when it has none.
inline kal::KalSessionType SessionTypeOfGroup(KalConfigGroup group) {
  return IsConfigGroup(group) ? kSessionTypes[static_cast<std::size_t>(group)] : kal::KAL_SESSION_NONE;
}

}  // namespace kalStore::internal
