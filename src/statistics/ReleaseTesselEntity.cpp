// Apart from the registry, so that the call goes through its exported symbol and can be interposed.
#include "tessel/CKalTessel.h"

namespace kalStore {

int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  if (entity == nullptr) return -1;
  return kalTesselInstant.releaseTesselEntity(type, callId, entity);
}

}  // namespace kalStore
