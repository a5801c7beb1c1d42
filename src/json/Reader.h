#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/json_text.h"

namespace json {

/// The value of a JSON text that stays where it is: as Deserialize(), without a std::string. `error` may be
/// null.
Value ParseDocument(std::string_view text, ParseError* error = nullptr);

/// The first fault of a JSON text, at a fraction of what its value would cost.
ParseError FaultOf(std::string_view text);

/// One object or array whose end has not been read yet. Exactly one of the two is set.
struct StackDepthType {
  Object* object;
  Array* array;
  std::size_t firstElement = 0;  ///< of an array, in the reader's elements
  bool empty = true;
};

/// Reads one document in a single pass. The members of an object are read into their final place; the
/// elements of an array wait for its end, so that it is made once and in its size. The reader's own stack,
/// not the thread's, holds what is open: no text overflows it.
class Reader {
 public:
  explicit Reader(std::string_view text);

  /// False at the first fault; `document` then holds a part of what was read before it.
  bool Read(Value& document);

  /// The same without keeping what is read.
  bool Check();

  /// After Read() or Check() returned false: the fault.
  ParseError Fault() const;

 private:
  bool readNext();
  bool readMember(Object& object);
  bool readKey(std::string& key);
  bool readValue(Value& place);
  bool readNumber(Value& place);
  bool readString(std::string& out);
  bool readEscape(std::string& out);
  bool readLiteral(std::string_view word);
  bool readDigits();
  bool open(StackDepthType record);
  void close();

  void skipSpace() {
    if (m_at != m_end && json_isspace(*m_at)) skipMoreSpace();
  }
  void skipMoreSpace();
  bool at(char c) const { return m_at != m_end && *m_at == c; }
  bool atDigit() const { return m_at != m_end && *m_at >= '0' && *m_at <= '9'; }
  bool take(char c);
  bool fail(const char* reason);

  static void setNumber(Value& place, double number, ValueType type);
  static void setInteger(Value& place, double number);

  const char* const m_begin;
  const char* const m_end;
  const char* m_at;
  const char* m_reason = nullptr;
  bool m_keeps = true;
  Value m_unkept;  // Where each value goes in turn when none is kept.
  std::vector<StackDepthType> m_open;
  std::vector<Value> m_elements;  // Of the arrays in m_open, the innermost one's last.
};

}  // namespace json
