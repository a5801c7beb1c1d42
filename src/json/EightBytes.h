// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace kalStore::internal {

/// Eight bytes of a text that are looked at together: the first is in the lowest bits, on every processor.
class EightBytes {
 public:
  explicit EightBytes(const char* at) {
    std::memcpy(&m_word, at, sizeof m_word);
    if constexpr (std::endian::native == std::endian::big) m_word = __builtin_bswap64(m_word);
  }

  // Marks are the highest bits of bytes. Those of Equal() and Below() are right up to the first one: a byte
  // after it may be marked without need.
  static constexpr std::uint64_t kHighs = 0x8080808080808080;

  std::uint64_t Equal(char byte) const { return below(m_word ^ each(byte), 1); }
  /// REQUIRES: a bound of at most 0x80.
  std::uint64_t Below(unsigned char bound) const { return below(m_word, bound); }
  std::uint64_t NoDigits() const {
    const std::uint64_t values = m_word ^ each('0');  // Of digits, 0 to 9.
    return (((values & ~kHighs) + each(0x80 - 10)) | values) & kHighs;
  }

  /// How many bytes precede the first mark. REQUIRES: one of them is marked.
  static int Before(std::uint64_t marks) { return std::countr_zero(marks) / 8; }

 private:
  static constexpr std::uint64_t each(unsigned char byte) { return std::uint64_t{0x0101010101010101} * byte; }
  static constexpr std::uint64_t below(std::uint64_t word, unsigned char bound) {
    return (word - each(bound)) & ~word & kHighs;
  }

  std::uint64_t m_word;
};

}  // namespace kalStore::internal
