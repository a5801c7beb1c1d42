// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/KalConfigGroup.h"
#include "tessel/KalSessionType.h"

namespace kalStore::internal {

/// The group of a session type; KAL_CONFIG_GROUP_DEFAULT when it has none.
KalConfigGroup GroupOfSessionType(kal::KalSessionType sessionType);

/// The session type of a group, the inverse; KAL_SESSION_NONE when it has none.
kal::KalSessionType SessionTypeOfGroup(KalConfigGroup group);

}  // namespace kalStore::internal
