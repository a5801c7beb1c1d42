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

namespace fuzz {
namespace {

struct Malformed {};

class ModelReader {
 public:
  explicit ModelReader(std::string_view text) : m_text(text) {}

  JsonModel Document() {
    JsonModel document = value(0);
    if (m_at != m_text.size()) throw Malformed{};
    return document;
  }

 private:
  static constexpr int kDeepest = 1000;

  char next() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
  bool isAtEnd() const { return m_at == m_text.size(); }
  char take() {
    if (isAtEnd()) throw Malformed{};
    return m_text[m_at++];
  }
  bool takeIf(char c) {
    if (isAtEnd() || m_text[m_at] != c) return false;
    ++m_at;
    return true;
  }
  void space() {
    while (!isAtEnd() && std::string_view(" \t\n\v\f\r").find(m_text[m_at]) != std::string_view::npos) ++m_at;
  }

  // One value with the white space around it, below `depth` open brackets.
  JsonModel value(int depth) {
    space();
    JsonModel model;
    if (isAtEnd()) throw Malformed{};
    if (takeIf('"')) {
      model.type = json::StringVal;
      model.text = string();
    } else if (next() == '{' || next() == '[') {
      if (depth == kDeepest) throw Malformed{};
      model = take() == '{' ? object(depth + 1) : array(depth + 1);
    } else if (std::isalpha(static_cast<unsigned char>(next())) != 0) {
      model = literal();
    } else {
      model = number();
    }
    space();
    return model;
  }

  JsonModel object(int depth) {
    JsonModel model;
    model.type = json::ObjectVal;
    space();
    if (takeIf('}')) return model;
    do {
      space();
      if (!takeIf('"')) throw Malformed{};
      const std::string key = string();
      space();
      if (!takeIf(':')) throw Malformed{};
      model.members.insert_or_assign(key, value(depth));
    } while (takeIf(','));
    if (!takeIf('}')) throw Malformed{};
    return model;
  }

  JsonModel array(int depth) {
    JsonModel model;
    model.type = json::ArrayVal;
    space();
    if (takeIf(']')) return model;
    do model.elements.push_back(value(depth));
    while (takeIf(','));
    if (!takeIf(']')) throw Malformed{};
    return model;
  }

  JsonModel literal() {
    for (const char* word : {"true", "false", "null"}) {
      const std::string token(m_text.substr(m_at, std::string_view(word).size()));
      if (strcasecmp(token.c_str(), word) != 0) continue;
      m_at += token.size();
      JsonModel model;
      if (*word != 'n') model.type = json::BoolVal;
      model.flag = *word == 't';
      return model;
    }
    throw Malformed{};
  }

  void digits() {
    const std::size_t start = m_at;
    while (next() >= '0' && next() <= '9') ++m_at;
    if (m_at == start) throw Malformed{};
  }

  JsonModel number() {
    const std::size_t start = m_at;
    takeIf('-');
    if (!takeIf('0')) digits();
    const std::size_t integerEnd = m_at;
    if (takeIf('.')) digits();
    if (takeIf('e') || takeIf('E')) {
      if (!takeIf('+')) takeIf('-');
      digits();
    }
    JsonModel model;
    model.number = std::strtod(std::string(m_text.substr(start, m_at - start)).c_str(), nullptr);
    model.type = m_at == integerEnd ? integerType(model.number) : json::DoubleVal;
    return model;
  }

  static json::ValueType integerType(double number) {
    if (number >= -2147483648.0 && number <= 2147483647.0) return json::IntVal;
    if (number > 0 && number <= 4294967295.0) return json::UnsignedIntVal;
    if (number >= -9223372036854775808.0 && number < 9223372036854775808.0) return json::Int64Val;
    return json::DoubleVal;
  }

  // What follows an opening quote, up to and with the closing one.
  std::string string() {
    std::string text;
    for (char c = take(); c != '"'; c = take()) text += c == '\\' ? escape() : c;
    return text;
  }

  char escape() {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const char letter = take();
    if (const std::size_t at = kLetters.find(letter); at != std::string_view::npos) return kMeanings[at];
    if (letter != 'u') throw Malformed{};
    std::string code;
    for (int i = 0; i < 4; ++i) code += take();
    if (!std::all_of(code.begin(), code.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
      throw Malformed{};
    return static_cast<char>(std::strtoul(code.c_str(), nullptr, 16) & 0xFF);
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
  try {
    return ModelReader(text).Document();
  } catch (const Malformed&) {
    return std::nullopt;
  }
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
