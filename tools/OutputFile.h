// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A file that a command writes. What was in it stays until then.
class OutputFile {
 public:
  /// Finds out whether the file can be written, and makes it if there is none. Throws CommandError with the
  /// system's reason.
  explicit OutputFile(std::string file);

  /// Throws CommandError likewise.
  void Write(std::string_view text) const;
  /// The same behind what is in it.
  void Append(std::string_view text) const;

 private:
  void write(std::string_view text, const char* mode) const;

  const std::string m_file;
};

/// Throws UsageError when a file that an option names for output is standard input, or a document that is
/// read.
/// @param what  what the file becomes: "a recording"
void RefuseUnusableOutput(const std::string& option, const std::string& what, const std::string& file,
                          const std::vector<std::string>& documents);
