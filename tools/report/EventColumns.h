// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "recording/RecordingEvent.h"

/// Events as a page reads them quickly: those with the same members are the rows of a table, and each member
/// is a column of numbers. Strings are in one list, in which the columns have their places. web/columns.js is
/// the reader.
class EventColumns {
 public:
  /// What the page shows of an event.
  void Add(const RecordingEvent& event);

  bool IsEmpty() const { return m_order.empty(); }
  /// Whether the following events belong into another part: the page can be used between two.
  bool IsFull() const;
  /// JSON without markup.
  std::string Json() const;

 private:
  using Column = std::vector<double>;
  using Columns = std::vector<std::pair<const char*, Column>>;
  class Row;
  struct Table {
    Columns numbers;
    Columns values;                   // Places in the list.
    Column names, areTexts, members;  // Of statistics; the number "sizes" says how many each row has.
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Places = std::unordered_map<std::string, double, Hash, std::equal_to<>>;

  template <class ToJson>
  double placeOf(Places& places, std::string_view key, const ToJson& toJson);
  double placeOfText(std::string_view text);
  Row rowOf(const RecordingEvent& event);

  std::unordered_map<std::uint64_t, std::size_t> m_tableOf;  // By which members a row has.
  std::vector<Table> m_tables;
  Column m_order;      // The table of each event.
  std::string m_list;  // JSON values, each with a comma behind it.
  double m_listSize = 0;
  Places m_texts, m_jsons, m_origins;  // By the string, the JSON text, and what tells origins apart.
};
