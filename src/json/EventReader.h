// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "json/AsciiCase.h"
#include "json/EightBytes.h"
#include "json/HexDigit.h"
#include "json/JsonToken.h"
#include "json/StringScan.h"
#include "tessel/json_text.h"

namespace json {

/// One object or array whose end has not been read yet.
struct StackDepthType {
  char closing;  ///< the bracket that ends it
  bool isEmpty;  ///< whether no member or element has been read
};

}  // namespace json

namespace kalStore::internal {

/// Reads a JSON text in one pass and reports what it finds to a handler, in the order of the text. Builds
/// nothing, allocates nothing, and keeps what is open on a stack of its own: no text overflows the thread's.
///
/// A handler has these functions; `at` is a place in the text. What they throw ends the reading.
///
///   void BeginObject(const char* at);   void EndObject();
///   void BeginArray(const char* at);    void EndArray();
///   void Key(const JsonString& key);          // of the member whose value comes next
///   void String(const JsonString& string);
///   void Number(const JsonNumber& number);
///   void Literal(const char* at);             // its first letter says which: t, f or n, in any letter case
///
/// Events come before the end of the text has been seen: only Read() says whether the text is well-formed.
template <class Handler>
class EventReader {
 public:
  /// Both must outlive the reader.
  EventReader(std::string_view text, Handler& handler)
      : m_end(text.data() + text.size()), m_at(text.data()), m_handler(handler) {}

  /// False at the first fault; its place and reason are then known.
  bool Read() {
    skipSpace();
    if (!readValue()) return false;
    while (m_depth != 0) {
      if (!readNext()) return false;
    }
    skipSpace();
    return m_at == m_end || fail("nothing but white space may follow the document");
  }

  const char* FaultPlace() const { return m_at; }
  /// A string that is always valid; null without a fault.
  const char* FaultReason() const { return m_reason; }

 private:
  static constexpr std::size_t kMaxDepth = 1000;

  // One step in the innermost open object or array: its end, or its next member or element.
  bool readNext() {
    json::StackDepthType& inner = m_open[m_depth - 1];
    const bool isObject = inner.closing == '}';
    skipSpace();
    if (inner.isEmpty || !isAt(',')) {
      if (take(inner.closing)) {
        --m_depth;
        isObject ? m_handler.EndObject() : m_handler.EndArray();
        return true;
      }
      if (!inner.isEmpty) return fail(isObject ? "expected ',' or '}'" : "expected ',' or ']'");
    } else {
      ++m_at;
      skipSpace();
    }
    inner.isEmpty = false;
    if (isObject && !readKey()) return false;
    return readValue();
  }

  bool readKey() {
    if (!take('"')) return fail("expected a key in double quotes");
    JsonString key;
    if (!readString(key)) return false;
    m_handler.Key(key);
    skipSpace();
    if (!take(':')) return fail("expected ':'");
    skipSpace();
    return true;
  }

  bool readValue() {
    if (m_at == m_end) return fail("expected a value");
    switch (*m_at) {
      case '"': {
        ++m_at;
        JsonString string;
        if (!readString(string)) return false;
        m_handler.String(string);
        return true;
      }
      case '{':
        if (!open('}')) return false;
        m_handler.BeginObject(m_at - 1);
        return true;
      case '[':
        if (!open(']')) return false;
        m_handler.BeginArray(m_at - 1);
        return true;
      case 't':
      case 'T':
        return readLiteral("true");
      case 'f':
      case 'F':
        return readLiteral("false");
      case 'n':
      case 'N':
        return readLiteral("null");
      default:
        return readNumber();
    }
  }

  bool open(char closing) {
    if (m_depth == kMaxDepth) return fail("nested deeper than 1000 levels");
    m_open[m_depth++] = {closing, true};
    ++m_at;
    return true;
  }

  // The contents of a string whose opening quote has been read, with the closing quote.
  bool readString(JsonString& string) {
    const char* const contents = m_at;
    bool hasEscapes = false;
    for (;;) {
      m_at = FindSpecial<false>(m_at, m_end);
      if (m_at == m_end) return fail("the string is not closed");
      if (*m_at == '"') break;
      hasEscapes = true;
      ++m_at;
      if (!readEscape()) return false;
    }
    string = {{contents, m_at}, hasEscapes};
    ++m_at;
    return true;
  }

  // What follows a backslash.
  bool readEscape() {
    if (m_at == m_end) return fail("the string is not closed");
    switch (*m_at++) {
      case '"':
      case '\\':
      case '/':
      case 'b':
      case 'f':
      case 'n':
      case 'r':
      case 't':
        return true;
      case 'u':
        for (int i = 0; i < 4; ++i, ++m_at) {
          if (m_at == m_end || HexDigit(*m_at) < 0) return fail("expected four hexadecimal digits after \\u");
        }
        return true;
      default:
        --m_at;
        return fail("unknown escape in a string");
    }
  }

  bool readLiteral(std::string_view word) {
    const char* const start = m_at;
    for (const char letter : word) {
      if (m_at == m_end || Lowered(*m_at) != letter) return fail("expected true, false or null");
      ++m_at;
    }
    m_handler.Literal(start);
    return true;
  }

  bool readNumber() {
    const char* const start = m_at;
    const bool isNegative = take('-');
    if (!isAtDigit()) return fail(isNegative ? "expected a digit" : "expected a value");
    if (!take('0')) skipDigits();
    bool isInteger = true;
    if (take('.')) {
      isInteger = false;
      if (!readDigits()) return false;
    }
    if (take('e') || take('E')) {
      isInteger = false;
      if (!take('+')) take('-');
      if (!readDigits()) return false;
    }
    m_handler.Number({{start, m_at}, isInteger});
    return true;
  }

  bool readDigits() {
    if (!isAtDigit()) return fail("expected a digit");
    skipDigits();
    return true;
  }
  void skipDigits() {
    for (; m_end - m_at >= 8; m_at += 8) {
      if (const std::uint64_t others = EightBytes(m_at).NoDigits(); others != 0) {
        m_at += EightBytes::Before(others);
        return;
      }
    }
    while (isAtDigit()) ++m_at;
  }

  void skipSpace() {
    if (m_at != m_end && json::json_isspace(*m_at)) skipMoreSpace();
  }
  // The end of a line and its indentation, most often: spaces are taken eight at a time.
  void skipMoreSpace() {
    constexpr std::string_view kSpaces = "        ";
    do {
      ++m_at;
      while (std::string_view(m_at, m_end).starts_with(kSpaces)) m_at += kSpaces.size();
    } while (m_at != m_end && json::json_isspace(*m_at));
  }

  bool isAt(char c) const { return m_at != m_end && *m_at == c; }
  bool isAtDigit() const { return m_at != m_end && *m_at >= '0' && *m_at <= '9'; }
  bool take(char c) {
    if (!isAt(c)) return false;
    ++m_at;
    return true;
  }

  bool fail(const char* reason) {
    m_reason = reason;
    return false;
  }

  const char* const m_end;
  const char* m_at;
  Handler& m_handler;
  const char* m_reason = nullptr;
  std::size_t m_depth = 0;
  std::array<json::StackDepthType, kMaxDepth> m_open;  // Written as it is used.
};

}  // namespace kalStore::internal
