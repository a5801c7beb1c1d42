#include "json/Reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

#include "json/NumberText.h"
#include "json/StringScan.h"
#include "json/TextPlace.h"

namespace json {

namespace {

constexpr std::size_t kMaxDepth = 1000;

constexpr char Lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

constexpr int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char letter = Lowered(c);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

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

}  // namespace

Reader::Reader(std::string_view text) : m_begin(text.data()), m_end(m_begin + text.size()), m_at(m_begin) {}

bool Reader::Read(Value& document) {
  skipSpace();
  if (!readValue(document)) return false;
  while (!m_open.empty()) {
    if (!readNext()) return false;
  }
  skipSpace();
  return m_at == m_end || fail("nothing but white space may follow the document");
}

bool Reader::Check() {
  m_keeps = false;
  return Read(m_unkept);
}

ParseError Reader::Fault() const {
  ParseError error;
  error.offset = static_cast<std::size_t>(m_at - m_begin);
  TextPlace place;
  place.Advance({m_begin, error.offset});
  error.line = place.line;
  error.column = place.column;
  error.reason = m_reason;
  return error;
}

// One step in the innermost open object or array: its end, or its next member or element.
bool Reader::readNext() {
  StackDepthType& inner = m_open.back();
  skipSpace();
  if (inner.empty || !at(',')) {
    if (take(inner.object ? '}' : ']')) {
      close();
      return true;
    }
    if (!inner.empty) return fail(inner.object ? "expected ',' or '}'" : "expected ',' or ']'");
  } else {
    ++m_at;
    skipSpace();
  }
  inner.empty = false;
  if (inner.object) return readMember(*inner.object);
  return readValue(m_keeps ? m_elements.emplace_back() : m_unkept);
}

void Reader::close() {
  if (Array* const array = m_open.back().array) {
    const auto first = m_elements.begin() + static_cast<std::ptrdiff_t>(m_open.back().firstElement);
    array->m_elements.assign(std::move_iterator(first), std::move_iterator(m_elements.end()));
    m_elements.erase(first, m_elements.end());
  }
  m_open.pop_back();
}

bool Reader::readMember(Object& object) {
  std::string key;
  if (!readKey(key)) return false;
  if (!m_keeps) return readValue(m_unkept);
  const std::size_t size = object.size();
  Value& place = object.m_members.try_emplace(object.m_members.end(), std::move(key))->second;
  if (object.size() == size) place.Clear();  // The last of equal keys stands.
  return readValue(place);
}

bool Reader::readKey(std::string& key) {
  if (!take('"')) return fail("expected a key in double quotes");
  if (!readString(key)) return false;
  skipSpace();
  if (!take(':')) return fail("expected ':'");
  skipSpace();
  return true;
}

bool Reader::readValue(Value& place) {
  if (m_at == m_end) return fail("expected a value");
  switch (*m_at) {
    case '"':
      ++m_at;
      place.mValueType = StringVal;
      place.mStringVal.clear();
      return readString(place.mStringVal);
    case '{':
      place.mValueType = ObjectVal;
      return open({&place.mObjectVal.Get(), nullptr});
    case '[':
      place.mValueType = ArrayVal;
      return open({nullptr, &place.mArrayVal.Get(), m_elements.size()});
    case 't':
    case 'T':
      place.mValueType = BoolVal;
      place.mBoolVal = true;
      return readLiteral("true");
    case 'f':
    case 'F':
      place.mValueType = BoolVal;
      return readLiteral("false");
    case 'n':
    case 'N':
      return readLiteral("null");
    default:
      return readNumber(place);
  }
}

bool Reader::open(StackDepthType record) {
  if (m_open.size() == kMaxDepth) return fail("nested deeper than 1000 levels");
  m_open.push_back(record);
  ++m_at;
  return true;
}

bool Reader::readLiteral(std::string_view word) {
  for (const char letter : word) {
    if (m_at == m_end || Lowered(*m_at) != letter) return fail("expected true, false or null");
    ++m_at;
  }
  return true;
}

bool Reader::readNumber(Value& place) {
  const char* const start = m_at;
  const bool negative = take('-');
  const char* const digits = m_at;
  if (!atDigit()) return fail(negative ? "expected a digit" : "expected a value");
  if (!take('0')) readDigits();
  const std::size_t digitCount = static_cast<std::size_t>(m_at - digits);

  bool integer = true;
  if (take('.')) {
    integer = false;
    if (!readDigits()) return false;
  }
  if (take('e') || take('E')) {
    integer = false;
    if (!take('+')) take('-');
    if (!readDigits()) return false;
  }

  constexpr std::size_t kExactDigits = 18;  // always fit in 64 bits
  if (integer && digitCount <= kExactDigits) {
    std::int64_t magnitude = 0;
    for (const char* digit = digits; digit != m_at; ++digit) magnitude = magnitude * 10 + (*digit - '0');
    const double number = static_cast<double>(magnitude);
    setInteger(place, negative ? -number : number);
    return true;
  }
  const double number = ParseReal({start, m_at});
  if (integer) {
    setInteger(place, number);
  } else {
    setNumber(place, number, DoubleVal);
  }
  return true;
}

bool Reader::readDigits() {
  if (!atDigit()) return fail("expected a digit");
  while (atDigit()) ++m_at;
  return true;
}

void Reader::setInteger(Value& place, double number) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max()) {
    setNumber(place, number, IntVal);
  } else if (number > 0 && number <= std::numeric_limits<unsigned int>::max()) {
    setNumber(place, number, UnsignedIntVal);
  } else if (number >= -kTwoTo63 && number < kTwoTo63) {
    setNumber(place, number, Int64Val);
  } else {
    setNumber(place, number, DoubleVal);
  }
}

void Reader::setNumber(Value& place, double number, ValueType type) {
  place.mValueType = type;
  place.mIntVal = Saturated<int>(number);
  place.mFloatVal = SaturatedFloat(number);
  place.mDoubleVal = number;
  place.mUnsignedIntVal = Saturated<unsigned int>(number);
  place.mInt64Val = Saturated<std::int64_t>(number);
}

// The contents of a string whose opening quote has been read, with the closing quote.
bool Reader::readString(std::string& out) {
  for (;;) {
    const char* const special = FindSpecial<false>(m_at, m_end);
    out.append(m_at, special);
    m_at = special;
    if (m_at == m_end) return fail("the string is not closed");
    if (*m_at++ == '"') return true;
    if (!readEscape(out)) return false;
  }
}

// What follows a backslash.
bool Reader::readEscape(std::string& out) {
  if (m_at == m_end) return fail("the string is not closed");
  switch (*m_at) {
    case '"':
    case '\\':
    case '/':
      out += *m_at;
      break;
    case 'b':
      out += '\b';
      break;
    case 'f':
      out += '\f';
      break;
    case 'n':
      out += '\n';
      break;
    case 'r':
      out += '\r';
      break;
    case 't':
      out += '\t';
      break;
    case 'u': {
      int code = 0;
      for (int i = 0; i < 4; ++i) {
        ++m_at;
        const int digit = m_at == m_end ? -1 : HexDigit(*m_at);
        if (digit < 0) return fail("expected four hexadecimal digits after \\u");
        code = code * 16 + digit;
      }
      // A byte, not a code point: texts carry any bytes this way.
      out += static_cast<char>(code & 0xFF);
      break;
    }
    default:
      return fail("unknown escape in a string");
  }
  ++m_at;
  return true;
}

// A line's end and its indentation, most often: blanks are taken by the word.
void Reader::skipMoreSpace() {
  constexpr std::uint64_t kBlanks = 0x2020202020202020;
  do {
    ++m_at;
    std::uint64_t word = kBlanks;
    while (m_end - m_at >= 8 && std::memcpy(&word, m_at, sizeof word) && word == kBlanks) m_at += 8;
  } while (m_at != m_end && json_isspace(*m_at));
}

bool Reader::take(char c) {
  if (!at(c)) return false;
  ++m_at;
  return true;
}

bool Reader::fail(const char* reason) {
  m_reason = reason;
  return false;
}

Value ParseDocument(std::string_view text, ParseError* error) {
  Value document;
  Reader reader(text);
  const bool read = reader.Read(document);
  if (error) *error = read ? ParseError{} : reader.Fault();
  return read ? std::move(document) : Value();
}

ParseError FaultOf(std::string_view text) {
  Reader reader(text);
  return reader.Check() ? ParseError{} : reader.Fault();
}

Value Deserialize(const std::string& text) {
  return ParseDocument(text);
}

Value Deserialize(const std::string& text, ParseError& error) {
  return ParseDocument(text, &error);
}

}  // namespace json
