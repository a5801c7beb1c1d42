// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kalStore::internal {

/// Writes the parts of a JSON text to the end of a string. They gather in a chunk, which is appended when it
/// is full: a single character costs a comparison and a store.
class TextWriter {
 public:
  explicit TextWriter(std::string& out) : m_out(out) {}
  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  void Put(char c) {
    *room(1) = c;
    ++m_at;
  }
  void Put(std::string_view text) {
    if (text.size() > m_chunk.size()) {
      Flush();
      m_out += text;
    } else {
      text.copy(room(text.size()), text.size());
      m_at += text.size();
    }
  }
  /// A string value or key as a document has it, with quotes and escapes.
  void PutString(std::string_view text);
  /// In decimal; the same in every locale.
  void PutNumber(std::int64_t number);
  /// With six decimals; an infinity as 1e999 or -1e999, not-a-number as null.
  void PutNumber(double number);

  /// The last step: the string has everything from here on.
  void Flush() {
    m_out.append(m_chunk.data(), m_at);
    m_at = m_chunk.data();
  }

 private:
  // Room for that many characters, at m_at. REQUIRES: not more than a chunk has.
  char* room(std::size_t size) {
    if (size > static_cast<std::size_t>(m_chunk.data() + m_chunk.size() - m_at)) Flush();
    return m_at;
  }

  std::string& m_out;
  std::array<char, 4096> m_chunk;
  char* m_at = m_chunk.data();
};

}  // namespace kalStore::internal
