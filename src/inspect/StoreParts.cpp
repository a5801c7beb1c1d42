// SPDX-License-Identifier: Apache-2.0
#include "inspect/StoreParts.h"

namespace kalStore::internal {

void LookAtStore(std::uint32_t callId, const std::function<void(KalConfig&)>& look) {
  const detail::Lock lock(g_storesMutex);
  const auto found = TheStores().find(callId);
  if (found != TheStores().end()) look(*found->second.store);
}

}  // namespace kalStore::internal
