// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kalStore::internal {

/// Appends the number in decimal; the same in every locale.
void AppendNumber(std::string& out, std::int64_t number);

/// Appends the number with six decimals; an infinity as 1e999 or -1e999, not-a-number as null.
void AppendNumber(std::string& out, double number);

inline void AppendNumber(std::string& out, int number) {
  AppendNumber(out, std::int64_t{number});
}
inline void AppendNumber(std::string& out, unsigned int number) {
  AppendNumber(out, std::int64_t{number});
}

/// The double nearest to a number of JSON's grammar: an infinity when it is too large, zero when it is too
/// small.
double ParseReal(std::string_view token);

}  // namespace kalStore::internal
