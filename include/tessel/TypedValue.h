// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <system_error>

#include "util/ConfigData.h"

namespace kalStore {

/// The types that a setting can have: those that a ConfigData is made from.
template <class T>
concept ConfigType =
    std::same_as<T, bool> || std::same_as<T, int> || std::same_as<T, unsigned int> || std::same_as<T, long> ||
    std::same_as<T, unsigned long> || std::same_as<T, double> || std::same_as<T, std::string>;

/// Reads a value as a T, or not at all: no white space around it, no fraction for an integer, no sign for an
/// unsigned one. A bool is read as by ConfigData::ToBool(): "true", "false" and numbers. Any value reads as a
/// std::string. The same in every locale.
/// @param value  any
/// @return The value as a T; nothing when it is invalid, or its whole string is not a T within range.
/// @threads Any, on a value that no other thread writes.
/// @par Example
/// @code{.cpp}
/// assert(ReadAs<int>("15") == 15);
/// assert(!ReadAs<int>("15.5") && !ReadAs<unsigned int>("-1") && !ReadAs<bool>("fast"));
/// @endcode
template <ConfigType T>
std::optional<T> ReadAs(const ConfigData& value) {
  if (!value.IsValid()) return std::nullopt;
  const std::string& text = value.ToString();
  if constexpr (std::same_as<T, std::string>) {
    return text;
  } else if constexpr (std::same_as<T, bool>) {
    const bool flag = value.ToBool(false);
    return flag == value.ToBool(true) ? std::optional(flag) : std::nullopt;
  } else {
    T number{};
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ptr == end && result.ec == std::errc() ? std::optional(number) : std::nullopt;
  }
}

}  // namespace kalStore
