// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "recording/RecordingEvent.h"

/// A file with a recording, or standard input for "-".
class RecordingFile {
 public:
  using OnEvent = std::function<void(const RecordingEvent& event, const std::string& line)>;

  enum class End {
    kOfFile,
    /// What is appended is read, and where the file is one of a set, the next ones of its name: until the
    /// recording ends or nobody reads standard output.
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
  struct Close {
    void operator()(std::FILE* stream) const {
      if (stream != stdin) std::fclose(stream);
    }
  };

  using Stream = std::unique_ptr<std::FILE, Close>;

  bool openNext();

  std::string m_name;
  Stream m_stream;
};
