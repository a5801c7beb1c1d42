// SPDX-License-Identifier: Apache-2.0
#include "json/NumberText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

#include "json/TextWriter.h"
#include "util/ConfigData.h"

namespace kalStore::internal {

namespace {

constexpr std::size_t kLongestInteger = 20;  // With the sign of the least one.
constexpr std::size_t kLongestDouble = 317;  // The largest, with a sign and six decimals.

// The number with six decimals, rounded to the nearest and halves to even, in integers: the digits are those
// of to_chars, in less than half of its time (WriteDecimals in bench/json_bench.cpp). Returns where they end;
// null, and nothing is written, when the number is too large.
//
// A double is significand / 2^shift, with a significand of up to 53 bits. Its millionths are
// significand * 1,000,000 / 2^shift. The product takes 53 + 20 bits, hence 128. For example:
//
//   number     significand        shift   product >> shift   rest in units   written
//   1.5        3 * 2^51              52          1,500,000   0               1.500000
//   0.1        7205759403792794      56            100,000   5.6e-12         0.100000
//   2^-7       2^52                  59              7,812   one half        0.007812   (to even)
//   3 * 2^-7   3 * 2^51              58             23,437   one half        0.023438   (to even)
//   4e-7       7555786372591432      74                  0   0.4             0.000000
char* WriteSixDecimals([[maybe_unused]] char* at, [[maybe_unused]] double number) {
#ifndef __SIZEOF_INT128__
  return nullptr;  // 32-bit processors have no such products.
#else
  __extension__ using Wide = unsigned __int128;
  constexpr int kFractionBits = 52;
  constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kFractionBits;
  constexpr std::uint64_t kMillion = 1'000'000;
  constexpr double kTooLarge = 9e12;  // Millionths of all below fit in 63 bits.
  if (!(std::fabs(number) < kTooLarge)) return nullptr;

  const std::uint64_t bits = std::bit_cast<std::uint64_t>(number);
  const int biased = static_cast<int>(bits >> kFractionBits) & 0x7FF;
  // The magnitude is significand / 2^shift, with a shift above 0. Its millionths are below 2^73 / 2^shift:
  // from a shift of 75 on, it rounds to zero. So do zero and the least numbers, which have no hidden bit.
  const std::uint64_t significand = (bits & (kHiddenBit - 1)) | kHiddenBit;
  const int shift = 1075 - biased;
  std::uint64_t millionths = 0;
  if (shift < 75) {
    const Wide scaled = Wide{significand} * kMillion;
    const Wide half = Wide{1} << (shift - 1);
    const Wide rest = scaled & ((half << 1) - 1);
    millionths = static_cast<std::uint64_t>(scaled >> shift);
    if (rest > half || (rest == half && (millionths & 1) != 0)) ++millionths;
  }

  if (std::signbit(number)) *at++ = '-';
  at = std::to_chars(at, at + kLongestInteger, millionths / kMillion).ptr;
  *at++ = '.';
  std::uint64_t decimals = millionths % kMillion;
  for (int place = 5; place >= 0; --place) {
    at[place] = static_cast<char>('0' + decimals % 10);
    decimals /= 10;
  }
  return at + 6;
#endif
}

// What a token of a JSON number says; a NaN when no double can hold that.
template <class Real>
Real RealOf(std::string_view token) {
  Real number = 0;
  const char* const end = token.data() + token.size();
  if constexpr (requires { std::from_chars(end, end, number); }) {
    const std::errc error = std::from_chars(token.data(), end, number).ec;
    return error == std::errc::result_out_of_range ? std::numeric_limits<Real>::quiet_NaN() : number;
  } else {  // The standard library reads integers alone.
    return ConfigData(std::string(token)).ToDouble(std::numeric_limits<Real>::quiet_NaN());
  }
}

// The power of ten of the first digit that is not zero, for a number that no double can hold.
std::int64_t MagnitudeOf(std::string_view token) {
  const std::size_t exponentAt = std::min(token.find_first_of("eE"), token.size());
  const std::string_view digits = token.substr(0, exponentAt);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());

  std::int64_t exponent = 0;
  if (exponentAt < token.size()) {
    std::string_view text = token.substr(exponentAt + 1);
    if (text.front() == '+') text.remove_prefix(1);
    // Beyond any text's length, yet far enough from the limits that the sum below cannot overflow.
    constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max() / 2;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), exponent).ec;
    if (error != std::errc()) exponent = text.front() == '-' ? -kFar : kFar;
    exponent = std::clamp(exponent, -kFar, kFar);
  }
  return exponent + static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
}

}  // namespace

void TextWriter::PutNumber(std::int64_t number) {
  char* const at = room(kLongestInteger);
  m_at = std::to_chars(at, at + kLongestInteger, number).ptr;
}

void TextWriter::PutNumber(double number) {
  if (std::isnan(number)) return Put("null");
  if (std::isinf(number)) return Put(number < 0 ? "-1e999" : "1e999");
  char* const at = room(kLongestDouble);
  char* const end = WriteSixDecimals(at, number);
  m_at =
      end != nullptr ? end : std::to_chars(at, at + kLongestDouble, number, std::chars_format::fixed, 6).ptr;
}

double ParseReal(std::string_view token) {
  double number = RealOf<double>(token);
  if (std::isnan(number)) {
    number = MagnitudeOf(token) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    if (token.front() == '-') number = -number;
  }
  return number;
}

}  // namespace kalStore::internal
