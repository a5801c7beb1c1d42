// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "util/CKalUnknownImpl.h"

namespace kalStore::internal {

/// QueryInterface() of the statistics objects; `part` is the object's reference-counted part.
std::int32_t QueryStatisticsInterface(kal::CKalUnknownImpl& part, const kal::_tagUUID& iid, void** ppv);

}  // namespace kalStore::internal
