// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The groups of a store, and their names.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(KalConfigGroup2GroupName(KAL_CONFIG_GROUP_AUDIO_SI) == "AudioSi");
/// assert(GroupName2KalConfigGroup("AudioSi") == KAL_CONFIG_GROUP_AUDIO_SI);
/// assert(!IsConfigGroup(GroupName2KalConfigGroup("audiosi")));
/// @endcode

#include <cstdint>
#include <string>

#include "tessel/export.h"

namespace kalStore {

/// The groups of a store. Each has value names, subscriptions and locks of its own. Values outside 0 to 12,
/// compared as unsigned, select no group.
enum KalConfigGroup : std::int32_t {
  KAL_CONFIG_GROUP_COMMON = 0,
  KAL_CONFIG_GROUP_FEATURE = 1,
  KAL_CONFIG_GROUP_METRICS = 2,
  KAL_CONFIG_GROUP_AUDIO = 3,
  KAL_CONFIG_GROUP_AUDIO_SLIDE = 4,
  KAL_CONFIG_GROUP_VIDEO = 5,
  KAL_CONFIG_GROUP_VIDEO_SLIDE = 6,
  KAL_CONFIG_GROUP_APPLICATION = 7,
  KAL_CONFIG_GROUP_GAMESTATE = 8,
  KAL_CONFIG_GROUP_AUDIO_SI = 9,
  KAL_CONFIG_GROUP_TRANSMISSION = 10,
  KAL_CONFIG_GROUP_TA_ONLY = 11,
  KAL_CONFIG_GROUP_UNIT_TEST = 12,
  KAL_CONFIG_GROUP_LAST = 13,     ///< the number of groups; the result for an unknown group name
  KAL_CONFIG_GROUP_DEFAULT = -1,  ///< 0xFFFFFFFF: a facade's default group; no group for a store
};

/// A set of groups: bit g selects group g. Bits 13 and above are ignored.
using ConfigMultGroup_t = std::uint32_t;

/// Every group.
inline constexpr ConfigMultGroup_t kAllConfigGroups = (1U << KAL_CONFIG_GROUP_LAST) - 1;

/// Whether a number selects a group of a store.
/// @param group  any
/// @return True for 0 to 12.
constexpr bool IsConfigGroup(KalConfigGroup group) {
  return static_cast<std::uint32_t>(group) < KAL_CONFIG_GROUP_LAST;
}

/// Names a group.
/// @param group  any
/// @return The group's name, for example "Common"; "LastGroup" for 13, "Undefined_Group" for every other
/// value.
TESSEL_API std::string KalConfigGroup2GroupName(KalConfigGroup group);

/// Finds a group by its name.
/// @param name  exactly, letter case included
/// @return The group; KAL_CONFIG_GROUP_LAST for every string that names none of groups 0 to 12.
TESSEL_API KalConfigGroup GroupName2KalConfigGroup(const std::string& name);

}  // namespace kalStore
