// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

#include "Printable.h"
#include "util/ConfigData.h"

/// Writes a JSON object, member by member; it is complete when the writer ends. A member that is an object
/// itself is written by a function that gets its writer. Strings are written as Quoted() has them: no command
/// that writes JSON hands a terminal more than it should get.
class JsonObject {
 public:
  /// An object on a line of its own.
  explicit JsonObject(std::ostream& out) : JsonObject(out, "}\n") {}
  ~JsonObject() { m_out << m_end; }
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;

  /// `value`: a string, a boolean, an integer, a ConfigData (null when it is invalid) or a function that
  /// writes the members of an object.
  template <class T>
  JsonObject& Member(std::string_view name, const T& value) {
    beginMember(name);
    if constexpr (std::convertible_to<T, std::string_view>) {
      m_out << Quoted(value);
    } else if constexpr (std::same_as<T, bool>) {
      m_out << (value ? "true" : "false");
    } else if constexpr (std::integral<T>) {
      m_out << std::to_string(value);
    } else if constexpr (std::same_as<T, ConfigData>) {
      m_out << (value.IsValid() ? Quoted(value.ToString()) : "null");
    } else {
      writeObject(value);
    }
    return *this;
  }

  /// A member whose value is JSON text already.
  JsonObject& Raw(std::string_view name, std::string_view json) {
    beginMember(name);
    m_out << json;
    return *this;
  }

  /// An array of objects: `write` gets the writer of each, and the element that it is made of.
  template <class Range, class Write>
  JsonObject& Array(std::string_view name, const Range& range, const Write& write) {
    beginMember(name);
    const char* separator = "[";
    for (const auto& element : range) {
      m_out << separator;
      writeObject([&](JsonObject& object) { write(object, element); });
      separator = ",";
    }
    m_out << (*separator == '[' ? "[]" : "]");
    return *this;
  }

 private:
  JsonObject(std::ostream& out, const char* end) : m_out(out), m_end(end) { m_out << '{'; }

  void beginMember(std::string_view name) {
    m_out << m_separator << Quoted(name) << ':';
    m_separator = ",";
  }
  template <class Write>
  void writeObject(const Write& write) {
    JsonObject object(m_out, "}");
    write(object);
  }

  std::ostream& m_out;
  const char* const m_end;
  const char* m_separator = "";
};
