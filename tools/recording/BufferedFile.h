// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "OutputFile.h"

/// A file that is written piece by piece. Between the pieces it is not open: there may be any number of them.
class BufferedFile {
 public:
  /// Empties the file, or makes it. Throws CommandError when it cannot be written; so do the others.
  explicit BufferedFile(const std::string& file) : m_file(file) { m_file.Write(""); }

  void Append(std::string_view text) {
    m_buffer += text;
    if (m_buffer.size() >= kSize) Finish();
  }
  /// Writes what is left.
  void Finish() {
    m_file.Append(m_buffer);
    m_buffer.clear();
  }

 private:
  static constexpr std::size_t kSize = 65536;

  OutputFile m_file;
  std::string m_buffer;
};
