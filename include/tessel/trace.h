#pragma once

#include <string>

#include "tessel/export.h"

/// The label that opens a trace line: scope, class and method of a full signature as the compiler writes it
/// (__PRETTY_FUNCTION__). A text with no label in it is returned unchanged; null gives "ErrorName".
TESSEL_API std::string ExtractClassFunctionName(const char* prettyFunction);

/// `name` itself, or "UTIL" when it is null or empty; that text lives as long as the process.
TESSEL_API const char* GetCurrentModuleName(const char* name);

namespace kalStore {
using ::ExtractClassFunctionName;
using ::GetCurrentModuleName;
}  // namespace kalStore
