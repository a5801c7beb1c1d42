// SPDX-License-Identifier: Apache-2.0
#include "JsonModel.h"

#include <strings.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

namespace fuzz {
namespace {

// Each part is read whole or refused, without an exception: most inputs are refused.
class ModelReader {
 public:
  explicit ModelReader(std::string_view text) : m_text(text) {}

  bool Document(JsonModel& document) { return value(document, 0) && isAtEnd(); }

 private:
  static constexpr int kDeepest = 1000;

  char next() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
  bool isAtEnd() const { return m_at == m_text.size(); }
  bool takeIf(char c) {
    if (isAtEnd() || m_text[m_at] != c) return false;
    ++m_at;
    return true;
  }
  void space() {
    while (!isAtEnd() && std::string_view(" \t\n\v\f\r").find(m_text[m_at]) != std::string_view::npos) ++m_at;
  }

  // One value with the white space around it, below `depth` open brackets.
  bool value(JsonModel& model, int depth) {
    space();
    if (isAtEnd() || !bare(model, depth)) return false;
    space();
    return true;
  }

  bool bare(JsonModel& model, int depth) {
    if (takeIf('"')) {
      model.type = json::StringVal;
      return string(model.text);
    }
    if (next() == '{' || next() == '[') {
      if (depth == kDeepest) return false;
      return takeIf('{') ? object(model, depth + 1) : takeIf('[') && array(model, depth + 1);
    }
    return std::isalpha(static_cast<unsigned char>(next())) != 0 ? literal(model) : number(model);
  }

  bool object(JsonModel& model, int depth) {
    model.type = json::ObjectVal;
    space();
    if (takeIf('}')) return true;
    do {
      std::string key;
      space();
      if (!takeIf('"') || !string(key)) return false;
      space();
      JsonModel member;
      if (!takeIf(':') || !value(member, depth)) return false;
      model.members.insert_or_assign(std::move(key), std::move(member));
    } while (takeIf(','));
    return takeIf('}');
  }

  bool array(JsonModel& model, int depth) {
    model.type = json::ArrayVal;
    space();
    if (takeIf(']')) return true;
    do {
      if (!value(model.elements.emplace_back(), depth)) return false;
    } while (takeIf(','));
    return takeIf(']');
  }

  bool literal(JsonModel& model) {
    for (const char* word : {"true", "false", "null"}) {
      const std::string token(m_text.substr(m_at, std::string_view(word).size()));
      if (strcasecmp(token.c_str(), word) != 0) continue;
      m_at += token.size();
      if (*word != 'n') model.type = json::BoolVal;
      model.flag = *word == 't';
      return true;
    }
    return false;
  }

  bool digits() {
    const std::size_t start = m_at;
    while (next() >= '0' && next() <= '9') ++m_at;
    return m_at != start;
  }

  bool number(JsonModel& model) {
    const std::size_t start = m_at;
    takeIf('-');
    if (!takeIf('0') && !digits()) return false;
    const std::size_t integerEnd = m_at;
    if (takeIf('.') && !digits()) return false;
    if (takeIf('e') || takeIf('E')) {
      if (!takeIf('+')) takeIf('-');
      if (!digits()) return false;
    }
    model.number = std::strtod(std::string(m_text.substr(start, m_at - start)).c_str(), nullptr);
    model.type = m_at == integerEnd ? integerType(model.number) : json::DoubleVal;
    return true;
  }

  static json::ValueType integerType(double number) {
    if (number >= -2147483648.0 && number <= 2147483647.0) return json::IntVal;
    if (number > 0 && number <= 4294967295.0) return json::UnsignedIntVal;
    if (number >= -9223372036854775808.0 && number < 9223372036854775808.0) return json::Int64Val;
    return json::DoubleVal;
  }

  // What follows an opening quote, up to and with the closing one.
  bool string(std::string& text) {
    while (!takeIf('"')) {
      if (isAtEnd()) return false;
      if (takeIf('\\')) {
        if (!escape(text)) return false;
      } else {
        text += m_text[m_at++];
      }
    }
    return true;
  }

  bool escape(std::string& text) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (isAtEnd()) return false;
    if (const std::size_t at = kLetters.find(m_text[m_at]); at != std::string_view::npos) {
      ++m_at;
      text += kMeanings[at];
      return true;
    }
    if (!takeIf('u')) return false;
    const std::string code(m_text.substr(m_at, 4));
    if (code.size() != 4 ||
        !std::all_of(code.begin(), code.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
      return false;
    m_at += 4;
    text += static_cast<char>(std::strtoul(code.c_str(), nullptr, 16) & 0xFF);
    return true;
  }

  const std::string_view m_text;
  std::size_t m_at = 0;
};

template <class Integer>
Integer Nearest(double number) {
  using Limits = std::numeric_limits<Integer>;
  if (number >= static_cast<double>(Limits::max())) return Limits::max();
  if (number <= static_cast<double>(Limits::min())) return Limits::min();
  return static_cast<Integer>(number);
}

float NearestFloat(double number) {
  constexpr double kMax = std::numeric_limits<float>::max();
  return static_cast<float>(std::isinf(number) ? number : std::clamp(number, -kMax, kMax));
}

bool SameBits(double left, double right) {
  return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}
bool SameBits(float left, float right) {
  return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

bool SameScalars(const json::Value& left, const json::Value& right) {
  return left.GetType() == right.GetType() && left.ToInt() == right.ToInt() &&
         left.ToUnsignedInt() == right.ToUnsignedInt() && left.ToInt64() == right.ToInt64() &&
         SameBits(left.ToFloat(), right.ToFloat()) && SameBits(left.ToDouble(), right.ToDouble()) &&
         left.ToBool() == right.ToBool();
}

}  // namespace

std::optional<JsonModel> ReadJsonModel(std::string_view text) {
  std::optional<JsonModel> document(std::in_place);
  if (!ModelReader(text).Document(*document)) document.reset();
  return document;
}

bool Matches(const json::Value& value, const JsonModel& model) {
  const double number = model.number;
  if (value.GetType() != model.type || value.ToBool() != model.flag || !SameBits(value.ToDouble(), number) ||
      !SameBits(value.ToFloat(), NearestFloat(number)) || value.ToInt() != Nearest<int>(number) ||
      value.ToUnsignedInt() != Nearest<unsigned int>(number) ||
      value.ToInt64() != Nearest<std::int64_t>(number)) {
    return false;
  }
  switch (model.type) {
    case json::StringVal:
      return value.ToString() == model.text;
    case json::ArrayVal:
      return std::equal(value.ToArray().begin(), value.ToArray().end(), model.elements.begin(),
                        model.elements.end(),
                        [](const auto& element, const auto& expected) { return Matches(element, expected); });
    case json::ObjectVal:
      return std::equal(value.ToObject().begin(), value.ToObject().end(), model.members.begin(),
                        model.members.end(), [](const auto& member, const auto& expected) {
                          return member.first == expected.first && Matches(member.second, expected.second);
                        });
    default:
      return true;
  }
}

bool Identical(const json::Value& left, const json::Value& right) {
  if (!SameScalars(left, right)) return false;
  switch (left.GetType()) {
    case json::StringVal:
      return left.ToString() == right.ToString();
    case json::ArrayVal:
      return std::equal(left.ToArray().begin(), left.ToArray().end(), right.ToArray().begin(),
                        right.ToArray().end(), [](const auto& a, const auto& b) { return Identical(a, b); });
    case json::ObjectVal:
      return std::equal(
          left.ToObject().begin(), left.ToObject().end(), right.ToObject().begin(), right.ToObject().end(),
          [](const auto& a, const auto& b) { return a.first == b.first && Identical(a.second, b.second); });
    default:
      return true;
  }
}

bool HoldsInfinity(const json::Value& value) {
  switch (value.GetType()) {
    case json::DoubleVal:
      return std::isinf(value.ToDouble());
    case json::ArrayVal:
      return std::any_of(value.ToArray().begin(), value.ToArray().end(), HoldsInfinity);
    case json::ObjectVal:
      return std::any_of(value.ToObject().begin(), value.ToObject().end(),
                         [](const auto& member) { return HoldsInfinity(member.second); });
    default:
      return false;
  }
}

}  // namespace fuzz
