// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The beginning of a trace line, for components that write lines of the same form.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(ExtractClassFunctionName("void media::Encoder::Restart(int)") == "media::Encoder::Restart");
/// assert(std::string(GetCurrentModuleName("AUDIO")) == "AUDIO");
/// assert(std::string(GetCurrentModuleName("")) == "UTIL");
/// @endcode

#include <string>

#include "tessel/export.h"

/// Finds the label at the beginning of a trace line: scope, class and method of a function.
/// @param prettyFunction  a full signature as the compiler writes it (__PRETTY_FUNCTION__)
/// @return The label; the whole signature when it has none; "ErrorName" for null.
TESSEL_API std::string ExtractClassFunctionName(const char* prettyFunction);

/// Names the module of a trace line.
/// @param name  may be null or empty
/// @return `name` itself, or "UTIL" when it is null or empty; "UTIL" is valid as long as the process.
TESSEL_API const char* GetCurrentModuleName(const char* name);

namespace kalStore {
using ::ExtractClassFunctionName;
using ::GetCurrentModuleName;
}  // namespace kalStore
