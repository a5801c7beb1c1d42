// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "record/LineBuffer.h"

namespace kalStore::internal {

/// How many bytes the well-formed character of UTF-8 has that the string begins with; 0: there is none.
std::size_t CharacterSize(std::string_view text);

void AppendNumber(LineBuffer& out, std::uint64_t number);
/// Appends a JSON string. A byte that is no UTF-8 is written as \u00XX.
void AppendJsonString(LineBuffer& out, std::string_view text);
/// Appends the number divided by ten to the power of `decimals`, exact and as short as possible; 0 for less.
void AppendDecimal(LineBuffer& out, std::int64_t number, unsigned int decimals);

/// Writes one line of a recording at the end of a buffer, member by member. Inline, so that the sizes of
/// names are known.
class LineText {
 public:
  /// @param timeNs  from the recording's start; a time before is its start
  LineText(LineBuffer& out, std::string_view type, std::int64_t timeNs) : m_out(out) {
    m_out += "{\"type\":\"";
    m_out += type;
    m_out += "\",\"t\":";
    AppendDecimal(m_out, timeNs, 9);
  }
  LineText(const LineText&) = delete;
  LineText& operator=(const LineText&) = delete;

  LineText& Number(std::string_view member, std::uint64_t number) {
    name(member);
    AppendNumber(m_out, number);
    return *this;
  }
  LineText& String(std::string_view member, std::string_view text) {
    name(member);
    AppendJsonString(m_out, text);
    return *this;
  }
  /// A string that has nothing to escape.
  LineText& Word(std::string_view member, std::string_view word) {
    name(member);
    m_out += '"';
    m_out += word;
    m_out += '"';
    return *this;
  }
  LineText& Microseconds(std::string_view member, std::int64_t ns) {
    name(member);
    AppendDecimal(m_out, ns, 3);
    return *this;
  }
  LineText& True(std::string_view member) { return Raw(member, "true"); }
  LineText& Strings(std::string_view member, std::span<const char* const> texts);
  /// A JSON value.
  LineText& Raw(std::string_view member, std::string_view json) {
    name(member);
    m_out += json;
    return *this;
  }
  /// Nothing is added after this.
  void End() { m_out += "}\n"; }

 private:
  void name(std::string_view member) {
    constexpr std::size_t kMarks = 4;
    char* room = m_out.Room(member.size() + kMarks);
    *room++ = ',';
    *room++ = '"';
    room += member.copy(room, member.size());
    *room++ = '"';
    *room++ = ':';
    m_out.Use(room);
  }

  LineBuffer& m_out;
};

}  // namespace kalStore::internal
