// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace declare {

// Regular expressions, in the part of ECMA-262 that every reader of a schema knows, for numbers as a typed
// read takes them. They match the whole of a string.

/// Whole numbers from `minimum` to `maximum`; the latter is not less. With `isSigned`, zero may be "-0", too.
std::string WholeNumberPattern(std::int64_t minimum, std::int64_t maximum, bool isSigned);

/// Any number but infinity and not-a-number.
std::string NumberPattern();

/// "true", "false" in any letter case, or a number.
std::string BoolPattern();

}  // namespace declare
