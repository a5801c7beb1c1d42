#pragma once

#include <cstdint>

#include "util/CKalUnknownImpl.h"

namespace kalStore::internal {

/// What QueryInterface() of the statistics objects does; `part` is the object's reference-counted part.
std::int32_t QueryStatisticsInterface(kal::CKalUnknownImpl& part, const kal::_tagUUID& iid, void** ppv);

}  // namespace kalStore::internal
