// SPDX-License-Identifier: Apache-2.0
// In a file of its own, so that the call goes through its exported symbol and can be interposed.
#include "statistics/ProcessRegistry.h"

namespace kalStore {

int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  if (entity == nullptr) return -1;
  return internal::ProcessRegistry::Release(type, callId, entity, __builtin_return_address(0));
}

}  // namespace kalStore
