// Apart from the registry, so that both calls go through its exported symbols and can be interposed.
#include "tessel/CKalTessel.h"

namespace kalStore {

int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out) {
  if (out == nullptr) return kResultNotFound;
  *out = nullptr;
  *out = kalTesselInstant.createOrGetTesselEntity(type, callId);
  return *out == nullptr ? kResultNotFound : kResultOk;
}

int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  if (entity == nullptr) return -1;
  return kalTesselInstant.releaseTesselEntity(type, callId, entity);
}

}  // namespace kalStore
