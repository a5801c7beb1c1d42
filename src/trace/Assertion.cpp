// SPDX-License-Identifier: Apache-2.0
#include "trace/Assertion.h"

#include "trace/TraceLine.h"

namespace kalStore::internal {

void ReportAssertion(const char* file, int line, const char* condition) {
  TESSEL_TRACE_TEXT(0, "[KAL_ASSERT] " << file << ":" << line << " Assert failed: " << condition);
  cm_assertion_report();
}

}  // namespace kalStore::internal
