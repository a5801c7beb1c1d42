// SPDX-License-Identifier: Apache-2.0
#include "json/EightBytes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>

namespace kalStore::internal {
namespace {

// Two of the eight bytes have every value, at every place; the others `others`. `marksOf` is right up to the
// first byte that `isMarked`.
void ExpectMarks(unsigned char others, const std::function<std::uint64_t(const EightBytes&)>& marksOf,
                 const std::function<bool(unsigned char)>& isMarked) {
  ASSERT_FALSE(isMarked(others));
  for (std::size_t at = 0; at + 1 < 8; ++at) {
    for (unsigned int both = 0; both <= 0xFFFF; ++both) {
      std::array<char, 8> bytes;
      bytes.fill(static_cast<char>(others));
      const auto first = static_cast<unsigned char>(both >> 8), second = static_cast<unsigned char>(both);
      bytes[at] = static_cast<char>(first);
      bytes[at + 1] = static_cast<char>(second);
      const std::uint64_t marks = marksOf(EightBytes(bytes.data()));
      if (!isMarked(first) && !isMarked(second)) {
        ASSERT_EQ(marks, 0u) << at << ", " << both;
      } else {
        ASSERT_NE(marks, 0u) << at << ", " << both;
        ASSERT_EQ(EightBytes::Before(marks), static_cast<int>(isMarked(first) ? at : at + 1)) << both;
      }
    }
  }
}

TEST(EightBytes, FindTheFirstOfAByte) {
  for (const char byte : {'\0', '"', '\x7F', '\x80', '\xFF'}) {
    ExpectMarks(
        0x41, [&](const EightBytes& bytes) { return bytes.Equal(byte); },
        [&](unsigned char found) { return found == static_cast<unsigned char>(byte); });
  }
}

TEST(EightBytes, FindTheFirstBelowABound) {
  for (const unsigned char bound : std::initializer_list<unsigned char>{0x01, 0x20, 0x7F, 0x80}) {
    ExpectMarks(
        0xC0, [&](const EightBytes& bytes) { return bytes.Below(bound); },
        [&](unsigned char found) { return found < bound; });
  }
}

TEST(EightBytes, FindTheFirstThatIsNoDigit) {
  for (const char digit : {'0', '9'}) {
    ExpectMarks(
        static_cast<unsigned char>(digit), [](const EightBytes& bytes) { return bytes.NoDigits(); },
        [](unsigned char found) { return found < '0' || found > '9'; });
  }
}

}  // namespace
}  // namespace kalStore::internal
