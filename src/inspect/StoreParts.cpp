// SPDX-License-Identifier: Apache-2.0
#include "inspect/StoreParts.h"

namespace kalStore::internal {

void LookAtStore(std::uint32_t callId, const std::function<void(KalConfig&)>& look) {
  std::shared_ptr<KalConfig> store;
  {
    const detail::Lock lock(g_storesMutex);
    const auto found = TheStores().find(callId);
    if (found != TheStores().end()) store = found->second.store;
  }
  if (store != nullptr) look(*store);
}

}  // namespace kalStore::internal
