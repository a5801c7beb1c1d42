// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace simulate {

/// The file that a report goes to. What was in it stays until the report is written.
class ReportFile {
 public:
  /// Finds out whether the file can be written, and makes it if there is none. Throws CommandError with the
  /// system's reason.
  explicit ReportFile(std::string file);

  /// Throws CommandError likewise.
  void Write(std::string_view text) const;

 private:
  const std::string m_file;
};

}  // namespace simulate
