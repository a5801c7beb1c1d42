// SPDX-License-Identifier: Apache-2.0
#include "documents/EntryList.h"

#include <algorithm>
#include <cstring>

namespace kalStore::internal {

void EntryList::Append(const JsonString& name, const JsonString& value, const TextPlace& place) {
  const std::size_t start = m_bytes.size();
  name.AppendTo(m_bytes);
  if (name.HasEscapes()) m_bytes.resize(std::min(m_bytes.find('\0', start), m_bytes.size()));
  m_bytes += '\0';
  value.AppendTo(m_bytes);
  m_ends.push_back(
      {m_bytes.size(), static_cast<std::uint32_t>(place.line), static_cast<std::uint32_t>(place.column)});
}

EntryList::Entry EntryList::operator[](std::size_t index) const {
  const End& end = m_ends[index];
  const std::size_t start = index == 0 ? 0 : m_ends[index - 1].offset;
  const char* const name = m_bytes.data() + start;
  const char* const value = name + std::strlen(name) + 1;
  return {name, {value, m_bytes.data() + end.offset}, end.line, end.column};
}

}  // namespace kalStore::internal
