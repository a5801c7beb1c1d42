// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "recording/RecordingEvent.h"
#include "recording/RecordingParts.h"

/// A file with a recording, or all files of a rotated set by the name of its last one; or standard input for
/// "-".
class RecordingFile {
 public:
  using OnEvent = std::function<void(const RecordingEvent& event, const std::string& line)>;

  enum class End {
    kOfFile,
    /// What is appended is read, until the recording ends or nobody reads standard output.
    kOfRecording,
  };

  /// Whether faults are written to standard error.
  enum class Faults { kShown, kSilent };

  /// Opens it. Throws CommandError when it cannot be opened.
  explicit RecordingFile(std::string name);

  const std::string& Name() const { return m_name; }
  /// Whether it is one of the files that are read, or another one of their set, by whatever name.
  bool Has(const std::string& file) const { return m_parts.Has(file); }
  /// Whether both are files of one set.
  bool IsOfSetOf(const RecordingFile& other) const { return m_parts.IsOfSetOf(other.m_parts); }
  /// Takes other files of its set in, to be read as one recording.
  void Join(RecordingFile&& other) { m_parts.Join(std::move(other.m_parts)); }

  /// Reads it from its beginning. What was in files of a set that are gone already is an event of type lost.
  /// What is wrong with a line is written to standard error, FILE:LINE: reason. Throws CommandError when the
  /// system cannot read it.
  /// @return Whether all of it could be read. An end that is cut off is no fault.
  bool Read(const OnEvent& onEvent, End end = End::kOfFile, Faults faults = Faults::kShown);

 private:
  std::string m_name;
  RecordingParts m_parts;
};

/// Opens recordings, before any is read. Files of one rotated set are one recording, at the place of the
/// first.
std::vector<RecordingFile> OpenRecordings(const std::vector<std::string>& names);
