// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace kalStore::internal {

/// A string or key of a JSON text whose escapes are known to be right. Lives as long as the text.
class JsonString {
 public:
  JsonString() = default;
  /// `contents` is what the text has between the quotes.
  JsonString(std::string_view contents, bool hasEscapes) : m_contents(contents), m_hasEscapes(hasEscapes) {}

  /// The opening quote.
  const char* Place() const { return m_contents.data() - 1; }
  bool HasEscapes() const { return m_hasEscapes; }

  /// Appends the bytes that the string means.
  void AppendTo(std::string& out) const {
    if (m_hasEscapes) {
      appendDecoded(out);
    } else {
      out.append(m_contents);
    }
  }

  /// The bytes that the string means, in a string of their size: one that is appended to has room for more.
  std::string Decoded() const {
    if (!m_hasEscapes) return std::string(m_contents);
    std::string decoded;
    appendDecoded(decoded);
    return decoded;
  }

  /// Whether the string means these bytes.
  bool Is(std::string_view bytes) const { return m_hasEscapes ? Decoded() == bytes : m_contents == bytes; }

 private:
  void appendDecoded(std::string& out) const;

  std::string_view m_contents;
  bool m_hasEscapes = false;
};

/// A number of a JSON text.
struct JsonNumber {
  std::string_view token;
  bool isInteger;  ///< has neither a point nor an exponent
};

}  // namespace kalStore::internal
