// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kalStore::internal {

/// How many bytes the well-formed character of UTF-8 has that the string begins with; 0: there is none.
std::size_t CharacterSize(std::string_view text);

/// Appends a JSON string. A byte that is no UTF-8 is written as \u00XX.
void AppendJsonString(std::string& out, std::string_view text);

/// Writes one line of a recording at the end of a string, member by member.
class LineText {
 public:
  /// @param timeNs  from the recording's start; a time before is its start
  LineText(std::string& out, std::string_view type, std::int64_t timeNs);
  LineText(const LineText&) = delete;
  LineText& operator=(const LineText&) = delete;

  LineText& Number(std::string_view name, std::uint64_t number);
  LineText& String(std::string_view name, std::string_view text);
  LineText& Microseconds(std::string_view name, std::int64_t ns);
  LineText& True(std::string_view name);
  LineText& Strings(std::string_view name, std::span<const char* const> texts);
  /// A JSON value.
  LineText& Raw(std::string_view name, std::string_view json);
  /// Nothing is added after this.
  void End();

 private:
  void name(std::string_view name);

  std::string& m_out;
};

}  // namespace kalStore::internal
