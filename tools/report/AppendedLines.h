// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <memory>
#include <string>

/// The lines of a file that grows, as server-sent events.
class AppendedLines {
 public:
  explicit AppendedLines(const std::string& file);

  /// Whether the file could be opened.
  bool IsOpen() const { return m_stream != nullptr; }
  /// An event with whole lines that were not given before; "" when there is none yet.
  std::string Next();

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::unique_ptr<std::FILE, Close> m_stream;
  std::string m_rest;  // Of the last line, which is not whole yet.
};
