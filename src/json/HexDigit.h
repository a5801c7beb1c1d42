// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "json/AsciiCase.h"

namespace kalStore::internal {

/// The value of a hexadecimal digit; -1 for any other character.
constexpr int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char letter = Lowered(c);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

}  // namespace kalStore::internal
