#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "util/export.h"

/// A configuration value: empty, or a text. Numbers and flags are kept in their text form: `true` is "1",
/// `false` is "0", integers are decimal, a `double` takes the shortest form that reads back to the same
/// number; always the C locale's.
///
/// A value is invalid only when default-constructed, made from a null text, moved from, or after
/// SetInvalid(); the text of no characters is valid. Two values are equal when both are empty, or both hold
/// something and their texts are the same.
///
/// @threads Like a standard string; share it only for reading. Texts up to 15 characters allocate nothing.
/// @par Example
/// @code{.cpp}
/// const ConfigData value(1.5);
/// assert(value.ToString() == "1.5" && value.ToDouble() == 1.5);
/// assert(value.ToInt(-1) == -1);  // not wholly an integer
/// assert(ConfigData("FALSE").ToBool(true) == false && !ConfigData("0"));
/// assert(!ConfigData().IsValid() && ConfigData("").IsValid());
/// @endcode
class UTIL_API ConfigData {
 public:
  /// An empty value.
  ConfigData() noexcept = default;
  ///@{
  /// Holds the value's text form.
  /// @param value  any
  ConfigData(bool value) : m_text(1, value ? '1' : '0'), m_valid(true) {}
  ConfigData(int value);
  ConfigData(unsigned int value);
  ConfigData(long value);
  ConfigData(unsigned long value);
  ConfigData(double value);
  ///@}
  /// Holds a text.
  /// @param text  copied; null gives an empty value
  ConfigData(const char* text) {
    if (text != nullptr) {
      m_text = text;
      m_valid = true;
    }
  }
  /// Holds a text.
  /// @param text  any bytes; what reads C texts, as a store does, ends at the first zero byte
  ConfigData(std::string text) noexcept : m_text(std::move(text)), m_valid(true) {}
  /// No other pointer is a value; without this, each would count as a flag.
  template <class T>
    requires(!std::is_same_v<std::remove_cv_t<T>, char>)
  ConfigData(T*) = delete;

  /// Copies the text.
  ConfigData(const ConfigData&) = default;
  /// Copies the text.
  ConfigData& operator=(const ConfigData&) = default;
  /// Takes the text; `other` is empty then.
  ConfigData(ConfigData&& other) noexcept
      : m_text(std::move(other.m_text)), m_valid(std::exchange(other.m_valid, false)) {
    other.m_text.clear();
  }
  /// Takes the text; `other` is empty then.
  ConfigData& operator=(ConfigData&& other) noexcept {
    if (this != &other) {
      m_text = std::move(other.m_text);
      m_valid = std::exchange(other.m_valid, false);
      other.m_text.clear();
    }
    return *this;
  }
  ~ConfigData() = default;

  /// @return Whether the value holds something, be it the empty text.
  bool IsValid() const noexcept { return m_valid; }
  /// Makes the value empty; the string's memory is kept.
  void SetInvalid() noexcept {
    m_text.clear();
    m_valid = false;
  }

  /// @return Whether the value counts as on: an empty value does not, nor do the texts "", "0", "false" (in
  /// any letter case) and numbers equal to zero. Every other text does.
  operator bool() const noexcept;

  ///@{
  /// @return The text, "" for an empty value. Lives until the value is changed or destroyed.
  const char* ToCstr() const noexcept { return m_text.c_str(); }
  const std::string& ToString() const noexcept { return m_text; }
  ///@}

  ///@{
  /// @param defaultValue  what stands in for a text that is no such number
  /// @return The text as a number; `defaultValue` when it is not wholly such a number, or out of the type's
  /// range.
  int ToInt(int defaultValue = 0) const noexcept;
  unsigned int ToUInt(unsigned int defaultValue = 0) const noexcept;
  long ToInt64(long defaultValue = 0) const noexcept;
  double ToDouble(double defaultValue = 0.0) const noexcept;
  ///@}
  /// @param defaultValue  what stands in for every other text
  /// @return "true" and "false" in any letter case, and numbers, of which zero is false; otherwise
  /// `defaultValue`.
  bool ToBool(bool defaultValue = false) const noexcept;

  /// Whether both are empty, or both hold the same text.
  bool operator==(const ConfigData& other) const noexcept {
    return m_valid == other.m_valid && m_text == other.m_text;
  }

 private:
  std::string m_text;
  bool m_valid = false;
};
