// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#include "recording/RecordingParts.h"

/// The lines of a recording that grows, as server-sent events. A line that is too long for a recording is cut
/// behind the length that shows it.
class AppendedLines {
 public:
  explicit AppendedLines(const std::string& file);

  /// Whether the file could be opened.
  bool IsOpen() const { return m_parts.IsOpen(); }
  /// An event with whole lines that were not given before; "" when there is none yet.
  std::string Next();

 private:
  bool openNext();
  std::string eventOf(std::string_view lines);

  RecordingParts m_parts;
  std::string m_rest;  // Of the last line, which is not whole yet.
};
