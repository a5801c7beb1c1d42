// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <chrono>
#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "tessel/ConfigEnum.h"
#include "util/ConfigData.h"

namespace kalStore {

namespace detail {

template <class T, class... Types>
concept OneOf = (std::same_as<T, Types> || ...);

template <class T>
concept ConfigInteger = OneOf<T, int, unsigned int, long, unsigned long, long long, unsigned long long>;

template <class T>
inline constexpr bool kIsConfigDuration = false;
template <ConfigInteger Count, class Unit>
inline constexpr bool kIsConfigDuration<std::chrono::duration<Count, Unit>> = true;

template <class T>
concept ConfigDuration = kIsConfigDuration<T>;

// Where the standard library's from_chars() is for integers alone. A float is rounded twice.
template <std::floating_point T>
std::optional<T> ReadReal(const ConfigData& value) noexcept {
  using Limits = std::numeric_limits<T>;
  const double read = value.ToDouble(0);
  if (!std::isnan(read) && read != value.ToDouble(1)) return std::nullopt;
  if (std::isfinite(read) && std::abs(read) > Limits::max()) {
    // Less than half of its last bit beyond the greatest number, it is rounded to that.
    const double beyond = std::abs(read) - Limits::max();
    if (beyond >= std::ldexp(1.0, Limits::max_exponent - Limits::digits - 1)) return std::nullopt;
    return std::copysign(Limits::max(), static_cast<T>(std::signbit(read) ? -1 : 1));
  }
  const T number = static_cast<T>(read);
  return number == 0 && read != 0 ? std::nullopt : std::optional(number);
}

}  // namespace detail

/// The types that a setting can have: `bool`, `int`, `long` and `long long`, signed and unsigned (and so
/// `std::int64_t`), `float`, `double`, `std::string`; a `std::chrono::duration` of one of these integers; an
/// enum that has a ConfigEnum.
template <class T>
concept ConfigType = detail::ConfigInteger<T> || detail::OneOf<T, bool, float, double, std::string> ||
                     detail::ConfigDuration<T> || detail::NamedEnum<T>;

/// Reads a value as a T, or not at all: no white space around it, no fraction for an integer, no sign for an
/// unsigned one. A bool is read as by ConfigData::ToBool(): "true", "false" and numbers. A duration is a
/// whole number of its own unit, an enum one of its names. Any value reads as a std::string. The same in
/// every locale. Allocates for a std::string alone; otherwise it neither throws nor locks.
/// @param value  any
/// @return The value as a T; nothing when it is invalid, or its whole string is not a T within range.
/// @threads Any, on a value that no other thread writes.
/// @par Example
/// @code{.cpp}
/// assert(ReadAs<int>("15") == 15);
/// assert(!ReadAs<int>("15.5") && !ReadAs<unsigned int>("-1") && !ReadAs<bool>("fast"));
/// assert(ReadAs<std::chrono::milliseconds>("40") == std::chrono::milliseconds(40));
/// @endcode
template <ConfigType T>
std::optional<T> ReadAs(const ConfigData& value) noexcept(!std::same_as<T, std::string>) {
  if (!value.IsValid()) return std::nullopt;
  const std::string& text = value.ToString();
  if constexpr (std::same_as<T, std::string>) {
    return text;
  } else if constexpr (std::same_as<T, bool>) {
    const bool flag = value.ToBool(false);
    return flag == value.ToBool(true) ? std::optional(flag) : std::nullopt;
  } else if constexpr (detail::NamedEnum<T>) {
    const ConfigEnumName<T>* const entry = detail::EntryNamed<T>(text);
    return entry ? std::optional(entry->value) : std::nullopt;
  } else if constexpr (detail::ConfigDuration<T>) {
    const auto count = ReadAs<typename T::rep>(value);
    return count ? std::optional(T(*count)) : std::nullopt;
  } else {
    T number{};
    const char* const end = text.data() + text.size();
    if constexpr (requires { std::from_chars(end, end, number); }) {
      const std::from_chars_result result = std::from_chars(text.data(), end, number);
      return result.ptr == end && result.ec == std::errc() ? std::optional(number) : std::nullopt;
    } else {
      return detail::ReadReal<T>(value);
    }
  }
}

/// Gives a value the form in which it is stored: ReadAs() reads it back. A duration is stored as the number
/// of its own unit, an enum as its name.
/// @param value  any
/// @return The value; an invalid one for an enum's value that has no name.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(ToConfigData(std::chrono::seconds(3)).ToString() == "3");
/// assert(ToConfigData(0.1F).ToString() == "0.1");
/// @endcode
template <ConfigType T>
ConfigData ToConfigData(T value) {
  if constexpr (detail::NamedEnum<T>) {
    const ConfigEnumName<T>* const entry = detail::EntryOf(value);
    return entry ? ConfigData(std::string(entry->name)) : ConfigData();
  } else if constexpr (detail::ConfigDuration<T>) {
    return ConfigData(value.count());
  } else if constexpr (std::same_as<T, float>) {
    char text[32];  // The shortest form that reads back as a float; that of a double would be longer.
    return ConfigData(std::string(text, std::to_chars(text, text + sizeof text, value).ptr));
  } else {
    return ConfigData(std::move(value));
  }
}

}  // namespace kalStore
