// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace kalStore::internal {

/// Reports a failed assertion: a line of level 0, then cm_assertion_report(), whether or not the line is
/// wanted. Returns: an assertion never ends the process.
void ReportAssertion(const char* file, int line, const char* condition);

}  // namespace kalStore::internal

/// Reports `condition` when it does not hold, and goes on: where the code cannot go on, it checks for itself.
#define KAL_ASSERT(condition)                                                                     \
  do {                                                                                            \
    if (!(condition)) ::kalStore::internal::ReportAssertion(__FILE_NAME__, __LINE__, #condition); \
  } while (false)

/// The same under a source name and line that stay as they are when the code moves: readers of traces know
/// them.
#define KAL_ASSERT_AT(file, line, condition)                                             \
  do {                                                                                   \
    if (!(condition)) ::kalStore::internal::ReportAssertion((file), (line), #condition); \
  } while (false)
