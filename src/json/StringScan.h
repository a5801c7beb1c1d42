// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "json/EightBytes.h"

namespace kalStore::internal {

/// The first byte of a string's contents that cannot be taken over as it is: a quote or a backslash, and with
/// `Controls` also a byte below 0x20. `end` when there is none.
template <bool Controls>
const char* FindSpecial(const char* at, const char* end) {
  for (; end - at >= 8; at += 8) {
    const EightBytes bytes(at);
    std::uint64_t hits = bytes.Equal('"') | bytes.Equal('\\');
    if constexpr (Controls) hits |= bytes.Below(0x20);
    if (hits != 0) return at + EightBytes::Before(hits);
  }
  for (; at != end; ++at) {
    if (*at == '"' || *at == '\\') break;
    if (Controls && static_cast<unsigned char>(*at) < 0x20) break;
  }
  return at;
}

}  // namespace kalStore::internal
