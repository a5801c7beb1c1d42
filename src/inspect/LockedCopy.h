// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kalStore::internal {

/// Copies records from where a lock protects them, and allocates nothing meanwhile. A record is a head and up
/// to two strings of any size.
template <class Head>
class LockedCopy {
 public:
  LockedCopy() : m_bytes(4096) {}

  /// Calls `walk` until all that it puts has found room. Each time it takes its locks, puts the records, and
  /// releases the locks; between two times there is more room. What it puts has changed then: nothing of the
  /// first is left.
  template <class Walk>
  void Make(Walk walk) {
    for (;;) {
      m_size = 0;
      walk();
      if (m_size <= m_bytes.size()) return;
      m_bytes.clear();
      m_bytes.resize(m_size + m_size / 4);  // Somewhat more: it may have grown by then.
    }
  }
  /// For `walk`. What finds no room is only measured.
  void Put(const Head& head, std::string_view first = {}, std::string_view second = {}) noexcept {
    put(Frame{head, first.size(), second.size()});
    put(first);
    put(second);
  }
  /// Calls `take` with the head and the strings of each record.
  template <class Take>
  void ForEach(Take take) const {
    for (std::size_t at = 0; at < m_size;) {
      Frame frame;
      std::memcpy(&frame, &m_bytes[at], sizeof frame);
      const char* const strings = &m_bytes[at] + sizeof frame;
      take(frame.head, std::string_view(strings, frame.first),
           std::string_view(strings + frame.first, frame.second));
      at += sizeof frame + frame.first + frame.second;
    }
  }

 private:
  struct Frame {
    Head head;
    std::size_t first;
    std::size_t second;
  };
  static_assert(std::is_trivially_copyable_v<Head>);

  void put(const Frame& frame) noexcept {
    put(std::string_view(reinterpret_cast<const char*>(&frame), sizeof frame));
  }
  void put(std::string_view bytes) noexcept {
    const std::size_t at = m_size;
    m_size += bytes.size();
    if (m_size <= m_bytes.size()) bytes.copy(m_bytes.data() + at, bytes.size());
  }

  std::vector<char> m_bytes;
  std::size_t m_size = 0;  // Of what was put, also of what found no room.
};

}  // namespace kalStore::internal
