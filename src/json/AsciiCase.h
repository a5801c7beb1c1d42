// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace kalStore::internal {

/// The letter in lower case; any other character as it is. ASCII alone, whatever the locale.
constexpr char Lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace kalStore::internal
