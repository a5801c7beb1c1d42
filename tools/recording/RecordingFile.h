// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "recording/RecordingEvent.h"
#include "recording/RecordingParts.h"

/// A file with a recording, or standard input for "-".
class RecordingFile {
 public:
  using OnEvent = std::function<void(const RecordingEvent& event, const std::string& line)>;

  enum class End {
    kOfFile,
    /// What is appended is read, and where the file is one of a set, the next ones: until the recording ends
    /// or nobody reads standard output. What was in files that are gone already is an event of type lost.
    kOfRecording,
  };

  /// Whether faults are written to standard error.
  enum class Faults { kShown, kSilent };

  /// Opens it. Throws CommandError when it cannot be opened.
  explicit RecordingFile(std::string name);

  const std::string& Name() const { return m_name; }

  /// Reads it from its beginning. What is wrong with a line is written to standard error, FILE:LINE: reason.
  /// Throws CommandError when the system cannot read it.
  /// @return Whether all of it could be read. An end that is cut off is no fault.
  bool Read(const OnEvent& onEvent, End end = End::kOfFile, Faults faults = Faults::kShown);

 private:
  std::string m_name;
  RecordingParts m_parts;
};
