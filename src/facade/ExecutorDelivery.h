// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "facade/GuardedCallback.h"
#include "tessel/ConfigExecutor.h"
#include "tessel/KalConfigEvent.h"

namespace kalStore::internal {

/// What a store calls on the setter's thread in place of `deliver`, which then runs on the executor. An
/// executor that refuses or drops a delivery is traced; the setter does not notice it.
/// @param callback  what `deliver` runs in the end: without it a delivery need not be posted, and may be
/// dropped; closed when the store lets go of what is returned, since deliveries on their way may outlive the
/// store
fnConfigChangedCallBack DeliverOn(ConfigExecutor&& executor, std::shared_ptr<GuardedCallback> callback,
                                  fnConfigChangedCallBack deliver);

}  // namespace kalStore::internal
