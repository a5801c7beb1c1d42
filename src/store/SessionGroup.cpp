// SPDX-License-Identifier: Apache-2.0
#include "store/SessionGroup.h"

namespace kalStore::internal {

KalConfigGroup GroupOfSessionType(kal::KalSessionType sessionType) {
  for (const SessionGroup& row : kSessionGroups) {
    if (row.sessionType == sessionType) return row.group;
  }
  return KAL_CONFIG_GROUP_DEFAULT;
}

}  // namespace kalStore::internal
