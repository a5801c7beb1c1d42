// SPDX-License-Identifier: Apache-2.0
#include "json/Writer.h"

#include "json/NumberText.h"
#include "json/StringScan.h"
#include "tessel/json_text.h"

namespace kalStore::internal {

namespace {

void AppendEscape(std::string& out, char c) {
  constexpr const char* kHex = "0123456789abcdef";
  out += '\\';
  switch (c) {
    case '"':
    case '\\':
      out += c;
      return;
    case '\b':
      out += 'b';
      return;
    case '\f':
      out += 'f';
      return;
    case '\n':
      out += 'n';
      return;
    case '\r':
      out += 'r';
      return;
    case '\t':
      out += 't';
      return;
    default:
      out += "u00";
      out += kHex[c >> 4];
      out += kHex[c & 0xF];
  }
}

}  // namespace

void AppendString(std::string& out, std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  const char* special = FindSpecial<true>(at, end);
  if (special == end) {  // Most strings: between the first and the last of as many quotes, in one step.
    const std::size_t start = out.size();
    out.append(text.size() + 2, '"');
    text.copy(out.data() + start + 1, text.size());
    return;
  }
  out += '"';
  for (;;) {
    out.append(at, special);
    if (special == end) break;
    AppendEscape(out, *special);
    at = special + 1;
    special = FindSpecial<true>(at, end);
  }
  out += '"';
}

}  // namespace kalStore::internal

namespace json {

using namespace kalStore::internal;

namespace {

void AppendArray(std::string& out, const Array& array);
void AppendObject(std::string& out, const Object& object);

void AppendValue(std::string& out, const Value& value) {
  switch (value.GetType()) {
    case NullVal:
      out += "null";
      return;
    case StringVal:
      return AppendString(out, value.ToString());
    case IntVal:
      return AppendNumber(out, value.ToInt());
    case Int64Val:
      return AppendNumber(out, value.ToInt64());
    case FloatVal:
      return AppendNumber(out, static_cast<double>(value.ToFloat()));
    case DoubleVal:
      return AppendNumber(out, value.ToDouble());
    case ObjectVal:
      return AppendObject(out, value.ToObject());
    case ArrayVal:
      return AppendArray(out, value.ToArray());
    case BoolVal:
      out += value.ToBool() ? "true" : "false";
      return;
    case UnsignedIntVal:
      return AppendNumber(out, value.ToUnsignedInt());
  }
}

void AppendArray(std::string& out, const Array& array) {
  out += '[';
  bool first = true;
  for (const Value& element : array) {
    if (!std::exchange(first, false)) out += ',';
    AppendValue(out, element);
  }
  out += ']';
}

void AppendObject(std::string& out, const Object& object) {
  out += '{';
  bool first = true;
  for (const auto& [key, value] : object) {
    if (!std::exchange(first, false)) out += ',';
    AppendString(out, key);
    out += ':';
    AppendValue(out, value);
  }
  out += '}';
}

}  // namespace

std::string Serialize(const Value& document) {
  const ValueType type = document.GetType();
  return type == ObjectVal || type == ArrayVal ? SerializeValue(document) : std::string();
}

std::string SerializeValue(const Value& value) {
  std::string out;
  AppendValue(out, value);
  return out;
}

std::string SerializeArray(const Array& array) {
  std::string out;
  AppendArray(out, array);
  return out;
}

}  // namespace json
