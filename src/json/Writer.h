// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace kalStore::internal {

/// Appends a string value or key as a document has it, with quotes and escapes.
void AppendString(std::string& out, std::string_view text);

}  // namespace kalStore::internal
