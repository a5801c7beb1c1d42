// SPDX-License-Identifier: Apache-2.0
#include "report/PackedColumn.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

constexpr double kLargestPacked = 9007199254740992.0;

// Integers, and times in milli-, micro- and nanoseconds.
constexpr double kScales[] = {1, 1e3, 1e6, 1e9};

// Whether all numbers times the scale are integers that divided by it are the numbers again.
bool IsExact(const std::vector<double>& numbers, double scale) {
  return std::ranges::all_of(numbers, [&](double number) {
    const double scaled = std::nearbyint(number * scale);
    return std::abs(scaled) < kLargestPacked && scaled / scale == number && !std::signbit(number);
  });
}

std::size_t BytesFor(double greatest) {
  if (greatest == 0) return 0;
  if (greatest < 0x1p8) return 1;
  if (greatest < 0x1p16) return 2;
  return greatest < 0x1p32 ? 4 : 8;
}

std::string Base64(const std::string& bytes) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t three = 0;
    for (std::size_t j = i; j < i + 3; ++j)
      three = three << 8U | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    for (unsigned shift = 24; shift > 0; shift -= 6) text += kLetters[three >> (shift - 6) & 0x3FU];
  }
  text.replace(text.size() - (3 - bytes.size() % 3) % 3, std::string::npos, (3 - bytes.size() % 3) % 3, '=');
  return text;
}

std::string Packed(const std::vector<double>& numbers, double base, double scale, std::size_t bytes) {
  std::string data;
  for (const double number : numbers) {
    std::uint64_t bits = bytes == 8 ? std::bit_cast<std::uint64_t>(number)
                                    : static_cast<std::uint64_t>(std::nearbyint(number * scale) - base);
    for (std::size_t i = 0; i < bytes; ++i, bits >>= 8U) data += static_cast<char>(bits & 0xFFU);
  }
  return "{\"length\":" + std::to_string(numbers.size()) +
         ",\"base\":" + std::to_string(static_cast<std::int64_t>(base)) +
         ",\"scale\":" + std::to_string(static_cast<std::int64_t>(scale)) +
         ",\"bytes\":" + std::to_string(bytes) + ",\"data\":\"" + Base64(data) + "\"}";
}

}  // namespace

std::string PackedColumn(const std::vector<double>& numbers) {
  if (numbers.empty()) return Packed(numbers, 0, 1, 0);
  for (const double scale : kScales) {
    if (!IsExact(numbers, scale)) continue;
    const auto [least, greatest] = std::ranges::minmax(numbers);
    const double base = std::nearbyint(least * scale);
    const std::size_t bytes = BytesFor(std::nearbyint(greatest * scale) - base);
    if (bytes < 8) return Packed(numbers, base, scale, bytes);
  }
  return Packed(numbers, 0, 1, 8);
}
