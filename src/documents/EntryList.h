// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "json/JsonToken.h"
#include "json/TextPlace.h"

namespace kalStore::internal {

/// Names and values in the order in which import sets them. They lie one behind the other in one buffer: a
/// list takes less memory than the document that it was read from.
class EntryList {
 public:
  /// Lives until the list is changed.
  struct Entry {
    const char* name;  ///< as the store takes it: ends at its first zero byte
    std::string_view value;
    std::uint32_t line;  ///< where the entry comes from, if that was asked for
    std::uint32_t column;
  };

  void Append(const JsonString& name, const JsonString& value, const TextPlace& place);

  std::size_t size() const { return m_ends.size(); }
  Entry operator[](std::size_t index) const;

 private:
  std::string m_bytes;  // Of each entry: the name, a zero byte, the value.
  struct End {
    std::size_t offset;
    std::uint32_t line;
    std::uint32_t column;
  };
  std::vector<End> m_ends;
};

}  // namespace kalStore::internal
