// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "trace/Assertion.h"

namespace kalStore::internal {

/// What operations trace that find no group; registrations trace the second.
inline constexpr const char* kNoGroup = "Error KalConfigGroup";
inline constexpr const char* kNoGroupAfterSpace = " Error KalConfigGroup";

/// Reports an argument check of the facade that does not hold, under the source name that readers of traces
/// know.
inline bool Check(bool holds, const char* condition, unsigned int line = __builtin_LINE()) {
  if (!holds) ReportAssertion("KalConfig", static_cast<int>(line), condition);
  return holds;
}

}  // namespace kalStore::internal
