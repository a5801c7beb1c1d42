// SPDX-License-Identifier: Apache-2.0
#include "simulate/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>

namespace simulate {

std::string Fixed(double value, int decimals) {
  std::array<char, 400> text;
  const auto result =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
  return {text.data(), result.ptr};
}

std::string Plural(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Duration(std::int64_t nanoseconds) {
  auto value = static_cast<double>(nanoseconds);
  for (const char* unit : {" ns", " µs", " ms"}) {
    if (value < 1000) return Fixed(value, value < 100 && value != std::floor(value) ? 1 : 0) + unit;
    value /= 1000;
  }
  return Fixed(value, 1) + " s";
}

std::string Mebibytes(std::uint64_t kibibytes) {
  return Fixed(static_cast<double>(kibibytes) / 1024, 1) + " MiB";
}

}  // namespace simulate
