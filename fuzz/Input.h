// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace fuzz {

/// Reads decisions from the bytes of one input, front to back. Past the end every decision is 0: a shorter
/// input leaves out the last decisions.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_at(data), m_left(size) {}

  bool IsEmpty() const { return m_left == 0; }

  std::uint8_t Byte() { return As<std::uint8_t>(); }
  bool Flag() { return (Byte() & 1) != 0; }
  /// From 0 to bound - 1. REQUIRES: 1 <= bound <= 256.
  std::size_t Below(std::size_t bound) { return Byte() % bound; }

  template <class T, std::size_t size>
  const T& Pick(const T (&choices)[size]) {
    return choices[Below(size)];
  }

  /// A number of any bit pattern.
  template <class Number>
  Number As() {
    Number number{};
    const std::uint8_t* from = m_at;
    if (const std::size_t taken = Take(sizeof number); taken != 0) std::memcpy(&number, from, taken);
    return number;
  }

  /// An index or count with the mistakes of callers: mostly small, sometimes at a limit or any number.
  std::int32_t Wild() {
    using Limits = std::numeric_limits<std::int32_t>;
    constexpr std::int32_t kEdges[] = {
        Limits::min(), Limits::min() + 1, Limits::max(), Limits::max() - 1, -256, 256};
    const std::uint8_t choice = Byte();
    if (choice < 224) return choice % 32 - 4;
    return choice < 240 ? kEdges[choice % std::size(kEdges)] : As<std::int32_t>();
  }

  /// At most `limit` bytes, of any value. REQUIRES: limit < 256.
  std::string Text(std::size_t limit) { return Bytes(Below(limit + 1)); }
  std::string Bytes(std::size_t count) {
    const std::size_t taken = std::min(count, m_left);
    std::string text(reinterpret_cast<const char*>(m_at), taken);
    Take(taken);
    return text;
  }
  std::string Rest() { return Bytes(m_left); }

 private:
  std::size_t Take(std::size_t count) {
    const std::size_t taken = std::min(count, m_left);
    m_at += taken;
    m_left -= taken;
    return taken;
  }

  const std::uint8_t* m_at;
  std::size_t m_left;
};

}  // namespace fuzz
