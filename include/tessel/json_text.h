// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Reads JSON text into values, and writes values as JSON text.
/// @threads Any, on values that nobody else writes.
/// @par Example
/// @code{.cpp}
/// json::ParseError error;
/// const json::Value document = json::Deserialize("{\n  \"fps\": 3O\n}", error);
/// assert(document.GetType() == json::NullVal);
/// assert(error.reason && error.line == 2 && error.column == 11);
///
/// const json::Value layers = json::Deserialize("[1, 2.5, \"HD\"]");
/// assert(json::Serialize(layers) == "[1,2.500000,\"HD\"]");
/// assert(json::SerializeArray(layers.ToArray()) == json::SerializeValue(layers));
/// @endcode

#include <cstddef>
#include <string>

#include "tessel/export.h"
#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_value.h"

namespace json {

/// Where a text is no longer JSON.
struct ParseError {
  std::size_t offset = 0;        ///< Bytes before the fault; the text's size when it ends too early.
  std::size_t line = 0;          ///< From 1.
  std::size_t column = 0;        ///< From 1, in bytes.
  const char* reason = nullptr;  ///< What is wrong: a string that is always valid; null when nothing is.
};

/// Whether a character is the white space between tokens, whatever the locale.
/// @param c  a character
/// @return True for a space, `\t`, `\n`, `\v`, `\f` and `\r`.
constexpr bool json_isspace(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Writes a document as text, members in key order.
///
/// Integers are written in decimal and float and double with six decimals, the same in every locale. What has
/// no JSON text is written so that the whole stays readable: an infinity as 1e999 or -1e999, which reads back
/// as one, and not-a-number as null. Strings and keys may hold any bytes and read back to the same.
/// @param document  an object or array
/// @return The text, compact; "" for any other value.
TESSEL_API std::string Serialize(const Value& document);

/// Writes one value as it is written inside a document.
/// @param value  of any kind
/// @return The text.
TESSEL_API std::string SerializeValue(const Value& value);
/// Writes an array as it is written inside a document.
/// @param array  any
/// @return The text.
TESSEL_API std::string SerializeArray(const Array& array);

/// Reads a JSON text.
///
/// More than RFC 8259 is read: literals in any letter case, any raw byte inside strings, the white space of
/// json_isspace(); `\uXXXX` gives one byte, its low 8 bits. The last of two equal keys counts. Nesting deeper
/// than 1000 levels is malformed.
///
/// A number with a point or exponent is a double. Any other is, by its value, an int, else an unsigned int,
/// else a 64-bit int, else a double; beyond 2^53 it has the precision of a double. Too large a number is an
/// infinity, too small a one zero. The same in every locale.
///
/// Neighbours in the document share memory: an object or a member that is moved out of it keeps up to 4 kB. A
/// copy has memory of its own.
/// @param text  one document, white space around it allowed
/// @return The value; null when the text is malformed.
TESSEL_API Value Deserialize(const std::string& text);

/// The same, and reports the first fault.
/// @param text  one document, white space around it allowed
/// @param error  receives the fault; its reason is null when the text is well-formed
/// @return The value; null when the text is malformed.
TESSEL_API Value Deserialize(const std::string& text, ParseError& error);

}  // namespace json
