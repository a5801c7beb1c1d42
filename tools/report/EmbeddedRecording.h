// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

/// Recordings as the page has them in it: texts of scripts that no browser runs, in parts that it reads one
/// after the other.
class EmbeddedRecording {
 public:
  /// Writes the part for `number`, the recording's place on the page, behind what is in `out`.
  EmbeddedRecording(std::string& out, std::size_t number, const std::string& name);
  /// Ends the last part.
  ~EmbeddedRecording();
  EmbeddedRecording(const EmbeddedRecording&) = delete;
  EmbeddedRecording& operator=(const EmbeddedRecording&) = delete;

  /// A line of the recording that has no fault.
  void Add(const std::string& line);

 private:
  void begin();

  std::string& m_out;
  std::string m_tag;
  std::size_t m_partBegin = 0;
};
