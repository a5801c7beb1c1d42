#pragma once

#include <string>
#include <string_view>

namespace kalStore::internal {

/// Appends a string value or key as it stands in a document, quotes and escapes included.
void AppendString(std::string& out, std::string_view text);

}  // namespace kalStore::internal
