// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace kalStore::internal {

// What names and strings are called in C++ code.

/// The words of a string, each with a capital first letter: "low-latency" gives "LowLatency". "" when that
/// would leave out anything but punctuation and spaces, or has no letter and no digit.
std::string CamelCase(std::string_view string);

/// Whether a string can name a type: letters, digits and underscores after a capital letter.
bool IsTypeName(std::string_view string);

/// Whether an identifier has no lower-case letter: the C library and compilers have hundreds of such macros.
bool IsLikeAMacro(std::string_view string);

/// Whether a string can name a namespace, possibly nested, that is a component's own.
bool IsOwnNamespace(std::string_view string);

}  // namespace kalStore::internal
