// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>

namespace kalStore::internal {

/// The first byte of a string's contents that cannot be taken over as it is: a quote or a backslash, and with
/// `Controls` also a byte below 0x20. `end` when there is none. Looks at eight bytes at a time.
template <bool Controls>
const char* FindSpecial(const char* at, const char* end) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighs = 0x8080808080808080;
  const auto hasZero = [](std::uint64_t word) { return (word - kOnes) & ~word & kHighs; };

  for (; end - at >= 8; at += 8) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    std::uint64_t hits = hasZero(word ^ (kOnes * '"')) | hasZero(word ^ (kOnes * '\\'));
    if constexpr (Controls) hits |= (word - kOnes * 0x20) & ~word & kHighs;
    if (hits) break;
  }
  for (; at != end; ++at) {
    if (*at == '"' || *at == '\\') break;
    if (Controls && static_cast<unsigned char>(*at) < 0x20) break;
  }
  return at;
}

}  // namespace kalStore::internal
