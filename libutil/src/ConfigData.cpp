// SPDX-License-Identifier: Apache-2.0
#include "util/ConfigData.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale() is no part of <clocale>.

namespace {

template <class Number>
std::string TextOf(Number value) {
  char text[32];  // The longest, a double's shortest form, has 24 characters.
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// As ReadWhole(), where the standard library's from_chars() is for integers alone: it reads what that would.
template <class Real>
std::errc ReadWholeReal(const std::string& text, Real& number) noexcept {
  // strtod() would also take white space or a plus sign before the number, and hexadecimal digits.
  const char* const first = text.c_str() + (text.starts_with('-') ? 1 : 0);
  const bool isFinite = std::string_view("0123456789.").find(*first) != std::string_view::npos;
  if (!isFinite && std::string_view("iInN").find(*first) == std::string_view::npos)
    return std::errc::invalid_argument;
  if (*first == '0' && (first[1] == 'x' || first[1] == 'X')) return std::errc::invalid_argument;

  static const locale_t plainLocale = newlocale(LC_ALL_MASK, "C", locale_t{});
  char* end = nullptr;
  number = strtod_l(text.c_str(), &end, plainLocale);
  if (end != text.data() + text.size()) return std::errc::invalid_argument;
  const bool isZero = text.find_first_of("123456789") >= text.find_first_of("eE");
  const bool isHeld = !isFinite || (std::isfinite(number) && (isZero || number != 0));
  return isHeld ? std::errc{} : std::errc::result_out_of_range;
}

/// Reads a number that is the whole string: no error for one in range, `result_out_of_range` for one that is
/// not, `invalid_argument` for any other string.
template <class Number>
std::errc ReadWhole(const std::string& text, Number& number) noexcept {
  const char* end = text.data() + text.size();
  if constexpr (requires { std::from_chars(end, end, number); }) {
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ptr == end ? result.ec : std::errc::invalid_argument;
  } else {
    return ReadWholeReal(text, number);
  }
}

template <class Number>
Number NumberOr(Number defaultValue, const std::string& text) noexcept {
  Number number{};
  return ReadWhole(text, number) == std::errc{} ? number : defaultValue;
}

bool EqualsIgnoringCase(std::string_view text, std::string_view lowerCase) noexcept {
  return std::ranges::equal(text, lowerCase, [](char character, char lower) {
    const bool upperCase = character >= 'A' && character <= 'Z';
    return (upperCase ? static_cast<char>(character - 'A' + 'a') : character) == lower;
  });
}

}  // namespace

ConfigData::ConfigData(int value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(unsigned int value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(long value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(unsigned long value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(long long value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(unsigned long long value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::ConfigData(double value) : m_text(TextOf(value)), m_valid(true) {}

ConfigData::operator bool() const noexcept {
  return !m_text.empty() && ToBool(true);
}

int ConfigData::ToInt(int defaultValue) const noexcept {
  return NumberOr(defaultValue, m_text);
}

unsigned int ConfigData::ToUInt(unsigned int defaultValue) const noexcept {
  return NumberOr(defaultValue, m_text);
}

long ConfigData::ToInt64(long defaultValue) const noexcept {
  return NumberOr(defaultValue, m_text);
}

double ConfigData::ToDouble(double defaultValue) const noexcept {
  return NumberOr(defaultValue, m_text);
}

bool ConfigData::ToBool(bool defaultValue) const noexcept {
  if (EqualsIgnoringCase(m_text, "true")) return true;
  if (EqualsIgnoringCase(m_text, "false")) return false;
  double number = 0.0;
  const std::errc error = ReadWhole(m_text, number);
  if (error == std::errc::invalid_argument) return defaultValue;
  // Out of a double's range, too large or too small, is not zero.
  return error == std::errc::result_out_of_range || number != 0.0;
}
