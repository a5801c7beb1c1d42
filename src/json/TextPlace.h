// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace kalStore::internal {

/// A line and column of a text, counted from its beginning.
struct TextPlace {
  std::size_t line = 1;
  std::size_t column = 1;  ///< in bytes

  /// Moves to the end of `passed`, the part of the text that comes next.
  void Advance(std::string_view passed) {
    const std::size_t lineEnd = passed.rfind('\n');
    if (lineEnd == std::string_view::npos) {
      column += passed.size();
    } else {
      line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
      column = passed.size() - lineEnd;
    }
  }
};

}  // namespace kalStore::internal
