// SPDX-License-Identifier: Apache-2.0
#include "store/SessionGroup.h"

namespace kalStore::internal {
namespace {

struct SessionGroup {
  kal::KalSessionType sessionType;
  KalConfigGroup group;
};

constexpr SessionGroup kSessionGroups[] = {
    {kal::KAL_SESSION_AUDIO, KAL_CONFIG_GROUP_AUDIO},
    {kal::KAL_SESSION_VIDEO, KAL_CONFIG_GROUP_VIDEO},
    {kal::KAL_SESSION_VIDEO_SLIDE, KAL_CONFIG_GROUP_VIDEO_SLIDE},
    {kal::KAL_SESSION_AUDIO_SLIDE, KAL_CONFIG_GROUP_AUDIO_SLIDE},
    {kal::KAL_SESSION_APPLICATION, KAL_CONFIG_GROUP_APPLICATION},
    {kal::KAL_SESSION_GAMESTATE, KAL_CONFIG_GROUP_GAMESTATE},
    {kal::KAL_SESSION_AUDIO_SI, KAL_CONFIG_GROUP_AUDIO_SI},
};

}  // namespace

KalConfigGroup GroupOfSessionType(kal::KalSessionType sessionType) {
  for (const SessionGroup& row : kSessionGroups) {
    if (row.sessionType == sessionType) return row.group;
  }
  return KAL_CONFIG_GROUP_DEFAULT;
}

kal::KalSessionType SessionTypeOfGroup(KalConfigGroup group) {
  for (const SessionGroup& row : kSessionGroups) {
    if (row.group == group) return row.sessionType;
  }
  return kal::KAL_SESSION_NONE;
}

}  // namespace kalStore::internal
