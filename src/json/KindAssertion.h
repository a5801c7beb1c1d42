// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace kalStore::internal {

/// Prints the condition that did not hold, in the manner of assert(), and aborts; in every build type, since
/// a value used as the wrong kind would read what is not there. Programs read the line number: it is not
/// always the place in today's file.
[[noreturn]] void AssertionFailed(int line, const char* signature, const char* condition);

}  // namespace kalStore::internal
