// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Check.h"

namespace fuzz {

/// A block of statistics as plain bytes, written at numbered offsets.
template <std::size_t size>
class ByteBlock {
 public:
  static constexpr std::size_t kSize = size;

  template <class Value>
  void Put(std::size_t offset, Value value) {
    FUZZ_CHECK(offset + sizeof value <= size);
    std::memcpy(m_bytes.data() + offset, &value, sizeof value);
  }
  template <class Value>
  Value At(std::size_t offset) const {
    FUZZ_CHECK(offset + sizeof(Value) <= size);
    Value value;
    std::memcpy(&value, m_bytes.data() + offset, sizeof value);
    return value;
  }
  void Clear() { m_bytes = {}; }
  std::uint8_t* Bytes() { return m_bytes.data(); }
  const std::uint8_t* Bytes() const { return m_bytes.data(); }

  friend bool operator==(const ByteBlock&, const ByteBlock&) = default;

 private:
  std::array<std::uint8_t, size> m_bytes{};
};

/// A caller's buffer for one block, of any alignment, with bytes around it that must not change.
template <std::size_t size>
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t misalignment)
      : m_at(kGuard + misalignment % kGuard), m_bytes(size + 3 * kGuard, kMark) {}

  void* Pointer() { return m_bytes.data() + m_at; }

  /// The bytes written there, or the marks; checks the bytes around them.
  ByteBlock<size> Contents() const {
    const auto isMark = [](std::uint8_t byte) { return byte == kMark; };
    const auto begin = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at);
    FUZZ_CHECK(std::all_of(m_bytes.begin(), begin, isMark));
    FUZZ_CHECK(std::all_of(begin + size, m_bytes.end(), isMark));
    ByteBlock<size> block;
    std::memcpy(block.Bytes(), m_bytes.data() + m_at, size);
    return block;
  }
  void Fill(const ByteBlock<size>& block) { std::memcpy(m_bytes.data() + m_at, block.Bytes(), size); }
  bool IsUntouched() const {
    return std::all_of(m_bytes.begin(), m_bytes.end(), [](std::uint8_t byte) { return byte == kMark; });
  }

 private:
  static constexpr std::size_t kGuard = 16;
  static constexpr std::uint8_t kMark = 0xA5;

  std::size_t m_at;
  std::vector<std::uint8_t> m_bytes;
};

/// Pseudo-random bytes, the same for the same seed, with every fourth word small: counters, levels.
inline void FillPattern(std::uint8_t* bytes, std::size_t size, std::uint16_t seed) {
  std::uint32_t state = seed * 2654435761U + 1;
  for (std::size_t i = 0; i < size; i += 4) {
    state = state * 1664525U + 1013904223U;
    const std::uint32_t word = (state >> 28) % 4 == 0 ? (state >> 8) % 64 - 8 : state;
    std::memcpy(bytes + i, &word, size - i < 4 ? size - i : 4);
  }
}

}  // namespace fuzz
