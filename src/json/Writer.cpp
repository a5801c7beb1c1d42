// SPDX-License-Identifier: Apache-2.0
#include "json/Writer.h"

#include <cstdint>
#include <utility>

#include "json/StringScan.h"
#include "json/TextWriter.h"
#include "tessel/json_text.h"

namespace kalStore::internal {

namespace {

void PutEscape(TextWriter& out, char c) {
  constexpr const char* kHex = "0123456789abcdef";
  out.Put('\\');
  switch (c) {
    case '"':
    case '\\':
      return out.Put(c);
    case '\b':
      return out.Put('b');
    case '\f':
      return out.Put('f');
    case '\n':
      return out.Put('n');
    case '\r':
      return out.Put('r');
    case '\t':
      return out.Put('t');
    default:
      out.Put("u00");
      out.Put(kHex[c >> 4]);
      out.Put(kHex[c & 0xF]);
  }
}

}  // namespace

void TextWriter::PutString(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  Put('"');
  for (;;) {
    const char* const special = FindSpecial<true>(at, end);
    Put(std::string_view(at, special));
    if (special == end) break;
    PutEscape(*this, *special);
    at = special + 1;
  }
  Put('"');
}

void AppendString(std::string& out, std::string_view text) {
  TextWriter writer(out);
  writer.PutString(text);
  writer.Flush();
}

}  // namespace kalStore::internal

namespace json {

using namespace kalStore::internal;

namespace {

void PutArray(TextWriter& out, const Array& array);
void PutObject(TextWriter& out, const Object& object);

void PutValue(TextWriter& out, const Value& value) {
  switch (value.GetType()) {
    case NullVal:
      return out.Put("null");
    case StringVal:
      return out.PutString(value.ToString());
    case IntVal:
      return out.PutNumber(std::int64_t{value.ToInt()});
    case Int64Val:
      return out.PutNumber(value.ToInt64());
    case FloatVal:
      return out.PutNumber(static_cast<double>(value.ToFloat()));
    case DoubleVal:
      return out.PutNumber(value.ToDouble());
    case ObjectVal:
      return PutObject(out, value.ToObject());
    case ArrayVal:
      return PutArray(out, value.ToArray());
    case BoolVal:
      return out.Put(value.ToBool() ? "true" : "false");
    case UnsignedIntVal:
      return out.PutNumber(std::int64_t{value.ToUnsignedInt()});
  }
}

void PutArray(TextWriter& out, const Array& array) {
  out.Put('[');
  bool first = true;
  for (const Value& element : array) {
    if (!std::exchange(first, false)) out.Put(',');
    PutValue(out, element);
  }
  out.Put(']');
}

void PutObject(TextWriter& out, const Object& object) {
  out.Put('{');
  bool first = true;
  for (const auto& [key, value] : object) {
    if (!std::exchange(first, false)) out.Put(',');
    out.PutString(key);
    out.Put(':');
    PutValue(out, value);
  }
  out.Put('}');
}

template <class Put>
std::string Written(Put put) {
  std::string text;
  TextWriter out(text);
  put(out);
  out.Flush();
  return text;
}

}  // namespace

std::string Serialize(const Value& document) {
  const ValueType type = document.GetType();
  return type == ObjectVal || type == ArrayVal ? SerializeValue(document) : std::string();
}

std::string SerializeValue(const Value& value) {
  return Written([&](TextWriter& out) { PutValue(out, value); });
}

std::string SerializeArray(const Array& array) {
  return Written([&](TextWriter& out) { PutArray(out, array); });
}

}  // namespace json
