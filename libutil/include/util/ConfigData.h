// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "util/export.h"

/// A configuration value: empty, or a string. Numbers and flags take the form of a string: `true` is "1",
/// `false` is "0", integers are decimal, a `double` has the shortest form that reads back to the same number;
/// the locale changes none of them.
///
/// A value is empty, and then not valid, only when default-constructed, made from a null pointer, moved from,
/// or after SetInvalid(); the string "" is a valid value. Two values are equal when both are empty, or both
/// hold a string and the strings are the same.
///
/// A string may hold zero bytes. ToString(), equality, and the conversions to numbers and flags take all of
/// it. ToCstr(), and what reads it, ends at the first zero byte; the export of settings documents does too,
/// so that a value with a zero byte does not read back as it was.
///
/// @threads Like a standard string; share it only for reading. Strings up to 15 characters allocate nothing.
/// @par Example
/// @code{.cpp}
/// const ConfigData value(1.5);
/// assert(value.ToString() == "1.5" && value.ToDouble() == 1.5);
/// assert(value.ToInt(-1) == -1);  // no integer: the default
/// assert(ConfigData("FALSE").ToBool(true) == false && !ConfigData("0"));
/// assert(!ConfigData().IsValid() && ConfigData("").IsValid());
/// @endcode
class UTIL_API ConfigData {
 public:
  /// An empty value.
  ConfigData() noexcept = default;
  ///@{
  /// Holds the value in the form of a string.
  /// @param value  any
  ConfigData(bool value) : m_text(1, value ? '1' : '0'), m_valid(true) {}
  ConfigData(int value);
  ConfigData(unsigned int value);
  ConfigData(long value);
  ConfigData(unsigned long value);
  ConfigData(long long value);
  ConfigData(unsigned long long value);
  ConfigData(double value);
  ///@}
  /// Holds a string.
  /// @param text  copied; null gives an empty value
  ConfigData(const char* text) {
    if (text != nullptr) {
      m_text = text;
      m_valid = true;
    }
  }
  /// Holds a string.
  /// @param text  any bytes, zero bytes included
  ConfigData(std::string text) noexcept : m_text(std::move(text)), m_valid(true) {}
  /// No other pointer is a value; without this, each would convert to a flag.
  template <class T>
    requires(!std::is_same_v<std::remove_cv_t<T>, char>)
  ConfigData(T*) = delete;

  /// Copies the string.
  ConfigData(const ConfigData&) = default;
  /// Copies the string.
  ConfigData& operator=(const ConfigData&) = default;
  /// Takes the string; `other` is empty then.
  ConfigData(ConfigData&& other) noexcept
      : m_text(std::move(other.m_text)), m_valid(std::exchange(other.m_valid, false)) {
    other.m_text.clear();
  }
  /// Takes the string; `other` is empty then.
  ConfigData& operator=(ConfigData&& other) noexcept {
    if (this != &other) {
      m_text = std::move(other.m_text);
      m_valid = std::exchange(other.m_valid, false);
      other.m_text.clear();
    }
    return *this;
  }
  ~ConfigData() = default;

  /// @return Whether the value holds a string; "" counts as one.
  bool IsValid() const noexcept { return m_valid; }
  /// Makes the value empty; does not free the string's memory.
  void SetInvalid() noexcept {
    m_text.clear();
    m_valid = false;
  }

  /// @return Whether the value counts as on: an empty value does not, nor do the strings "", "false" (in any
  /// letter case) and numbers equal to zero. Every other string does.
  operator bool() const noexcept;
  /// Converts to no other type: `int fps = value;` would go through the flag and give 1 for 30, and so would
  /// `text = value;` for a string. Use ToInt() and its siblings, or ToString().
  template <class T>
    requires(!std::is_class_v<T> && std::is_convertible_v<bool, T> && !std::is_same_v<T, bool>)
  operator T() const = delete;

  ///@{
  /// @return The string, "" for an empty value. Valid until the value is changed or destroyed.
  const char* ToCstr() const noexcept { return m_text.c_str(); }
  const std::string& ToString() const noexcept { return m_text; }
  ///@}

  ///@{
  /// @return The string as a number; `defaultValue` when the whole string is not such a number, or out of the
  /// type's range. Where a `long` has 32 bits, ToInt64() has no more; kalStore::ReadAs() reads 64 there, too.
  int ToInt(int defaultValue = 0) const noexcept;
  unsigned int ToUInt(unsigned int defaultValue = 0) const noexcept;
  long ToInt64(long defaultValue = 0) const noexcept;
  double ToDouble(double defaultValue = 0.0) const noexcept;
  ///@}
  /// @return The string as a flag: "true" and "false" in any letter case, and numbers, of which zero is
  /// false; `defaultValue` for every other string.
  bool ToBool(bool defaultValue = false) const noexcept;

  /// Whether both are empty, or both hold the same string.
  bool operator==(const ConfigData& other) const noexcept {
    return m_valid == other.m_valid && m_text == other.m_text;
  }

 private:
  std::string m_text;
  bool m_valid = false;
};
