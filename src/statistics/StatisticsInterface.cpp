// SPDX-License-Identifier: Apache-2.0
#include "statistics/StatisticsInterface.h"

#include "tessel/IKalUnknown.h"
#include "tessel/ResultCode.h"

namespace kalStore::internal {

std::int32_t QueryStatisticsInterface(kal::CKalUnknownImpl& part, const kal::_tagUUID& iid, void** ppv) {
  if (ppv == nullptr) return kResultNullOutput;
  if (iid != kStatisticsInterfaceId) {
    *ppv = nullptr;
    return kResultNoInterface;
  }
  part.AddReference();
  *ppv = &part;
  return kResultOk;
}

}  // namespace kalStore::internal
