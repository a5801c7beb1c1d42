// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "json/EventReader.h"
#include "json/NodeBlocks.h"
#include "json/NumberText.h"
#include "json/TextPlace.h"
#include "tessel/json_text.h"

namespace kalStore::internal {

namespace {

// The number, or the nearest that the type holds; the fraction is cut off. NaN does not occur in a text.
template <class Integer>
Integer Saturated(double number) {
  using Limits = std::numeric_limits<Integer>;
  if (number <= static_cast<double>(Limits::min())) return Limits::min();
  if (number >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(number);
}

float SaturatedFloat(double number) {
  if (std::isinf(number)) return static_cast<float>(number);
  using Limits = std::numeric_limits<float>;
  const double limit = static_cast<double>(Limits::max());
  return static_cast<float>(std::clamp(number, -limit, limit));
}

double DoubleOf(const JsonNumber& number) {
  constexpr std::size_t kExactDigits = 18;  // always fit in 64 bits
  std::string_view digits = number.token;
  const bool isNegative = digits.front() == '-';
  if (isNegative) digits.remove_prefix(1);
  if (!number.isInteger || digits.size() > kExactDigits) return ParseReal(number.token);
  std::int64_t magnitude = 0;
  for (const char digit : digits) magnitude = magnitude * 10 + (digit - '0');
  const double value = static_cast<double>(magnitude);
  return isNegative ? -value : value;
}

json::ValueType IntegerType(double number) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  using Int = std::numeric_limits<int>;
  if (number >= Int::min() && number <= Int::max()) return json::IntVal;
  if (number > 0 && number <= std::numeric_limits<unsigned int>::max()) return json::UnsignedIntVal;
  if (number >= -kTwoTo63 && number < kTwoTo63) return json::Int64Val;
  return json::DoubleVal;
}

}  // namespace

/// Makes a value of what a text has. The members of an object are read into their final place; the elements
/// of an array wait for its end, so that it is made once and in its size.
class TreeBuilder {
 public:
  json::Value& Document() { return m_document; }

  void BeginObject(const char*) {
    json::Value& place = next();
    place.mValueType = json::ObjectVal;
    m_open.push_back({&place.mObjectVal.Get(), nullptr, 0});
  }
  void EndObject() { m_open.pop_back(); }

  void BeginArray(const char*) {
    json::Value& place = next();
    place.mValueType = json::ArrayVal;
    m_open.push_back({nullptr, &place.mArrayVal.Get(), m_elements.size()});
  }
  void EndArray() {
    const auto first = m_elements.begin() + static_cast<std::ptrdiff_t>(m_open.back().firstElement);
    m_open.back().array->m_elements.assign(std::move_iterator(first), std::move_iterator(m_elements.end()));
    m_elements.erase(first, m_elements.end());
    m_open.pop_back();
  }

  void Key(const JsonString& key) {
    auto& members = m_open.back().object->m_members;
    const std::size_t size = members.size();
    // The node before its place: looked up first, the place would be checked a second time.
    m_member = &members
                    .emplace_hint(members.end(), std::piecewise_construct,
                                  std::forward_as_tuple(key.Decoded()), std::tuple())
                    ->second;
    if (members.size() == size) m_member->Clear();  // The last of equal keys counts.
  }

  void String(const JsonString& string) {
    json::Value& place = next();
    place.mValueType = json::StringVal;
    place.mStringVal = string.Decoded();
  }

  void Number(const JsonNumber& token) {
    json::Value& place = next();
    const double number = DoubleOf(token);
    place.mValueType = token.isInteger ? IntegerType(number) : json::DoubleVal;
    place.mDoubleVal = number;
    using Int = std::numeric_limits<int>;
    // Most often: nothing but the sign can be out of range.
    if (number > Int::min() && number < Int::max()) {
      place.mIntVal = static_cast<int>(number);
      place.mFloatVal = static_cast<float>(number);
      place.mUnsignedIntVal = static_cast<unsigned int>(std::max(place.mIntVal, 0));
      place.mInt64Val = place.mIntVal;
      return;
    }
    place.mIntVal = Saturated<int>(number);
    place.mFloatVal = SaturatedFloat(number);
    place.mUnsignedIntVal = Saturated<unsigned int>(number);
    place.mInt64Val = Saturated<std::int64_t>(number);
  }

  void Literal(const char* at) {
    json::Value& place = next();
    const char letter = Lowered(*at);
    if (letter == 'n') return;
    place.mValueType = json::BoolVal;
    place.mBoolVal = letter == 't';
  }

 private:
  // An object or array whose end has not come yet. Exactly one of the two is set.
  struct Open {
    json::Object* object;
    json::Array* array;
    std::size_t firstElement;  // of an array, in m_elements
  };

  // Where the next value goes.
  json::Value& next() {
    if (m_open.empty()) return m_document;
    return m_open.back().array ? m_elements.emplace_back() : *m_member;
  }

  NodeBlocks m_blocks;
  json::Value m_document;
  std::vector<Open> m_open;
  json::Value* m_member = nullptr;      // Of the innermost object, the one whose key came last.
  std::vector<json::Value> m_elements;  // Of the open arrays, the innermost one's last.
};

}  // namespace kalStore::internal

namespace json {

using namespace kalStore::internal;

Value Deserialize(const std::string& text) {
  ParseError error;
  return Deserialize(text, error);
}

Value Deserialize(const std::string& text, ParseError& error) {
  TreeBuilder tree;
  EventReader reader(text, tree);
  error = {};
  if (reader.Read()) return std::move(tree.Document());

  error.offset = static_cast<std::size_t>(reader.FaultPlace() - text.data());
  TextPlace place;
  place.Advance({text.data(), error.offset});
  error.line = place.line;
  error.column = place.column;
  error.reason = reader.FaultReason();
  return {};
}

}  // namespace json
