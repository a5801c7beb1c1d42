// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace kalStore::internal {

/// Bytes of lines that are about to be written. A string whose room does not shrink, and whose small
/// additions are inlined.
class LineBuffer {
 public:
  std::size_t Size() const { return m_size; }
  std::string_view Text() const { return {m_bytes.get(), m_size}; }

  /// Makes room for so many bytes more, and returns where they go. What is used of it is added by Use().
  char* Room(std::size_t size) {
    if (m_capacity - m_size < size) grow(size);
    return m_bytes.get() + m_size;
  }
  /// @param end  in the last room
  void Use(const char* end) { m_size = static_cast<std::size_t>(end - m_bytes.get()); }

  LineBuffer& operator+=(std::string_view text) {
    char* const room = Room(text.size());
    text.copy(room, text.size());
    m_size += text.size();
    return *this;
  }
  LineBuffer& operator+=(char byte) {
    *Room(1) = byte;
    ++m_size;
    return *this;
  }

  /// Leaves the bytes at the beginning.
  void Cut(std::size_t size) { m_size = size; }
  void Clear() { m_size = 0; }

 private:
  void grow(std::size_t size) {
    const std::size_t capacity = std::max(m_size + size, 2 * m_capacity);
    std::unique_ptr<char[]> bytes(new char[capacity]);
    Text().copy(bytes.get(), m_size);
    m_bytes = std::move(bytes);
    m_capacity = capacity;
  }

  std::unique_ptr<char[]> m_bytes;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

}  // namespace kalStore::internal
