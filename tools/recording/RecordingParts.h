// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "recording/RecordingEvent.h"

/// A recording's file while it is followed, and the next ones of its set as it is rotated: also those that
/// have lost the recording's name meanwhile.
class RecordingParts {
 public:
  /// Opens the file of the name; standard input for "-".
  explicit RecordingParts(std::string name);

  bool IsOpen() const { return m_stream != nullptr; }
  /// Of the file that is open. A stream would wait until its buffer is full, and remember an end.
  int Descriptor() const { return ::fileno(m_stream.get()); }
  /// Whether the file still has its recording: another one may have emptied it for itself. To be asked after
  /// its bytes were read, before they are used.
  bool IsTheSame() const;

  /// Takes note of where files begin and end. To be called with each event, in their order.
  /// @return A line of type lost that comes before it, for the events of files that were removed before they
  /// were opened; "" without any.
  std::string Take(const RecordingEvent& event);

  enum class Next {
    kNotYet,
    kOpened,  ///< The next file is open, at its beginning.
    kNone,    ///< The file has no next one, or another recording has its name.
  };
  /// Goes on once the file was read to its end.
  Next OpenNext();

 private:
  struct Close {
    void operator()(std::FILE* stream) const {
      if (stream != stdin) std::fclose(stream);
    }
  };
  using Stream = std::unique_ptr<std::FILE, Close>;

  static Stream open(const std::string& name);

  const std::string m_name;
  Stream m_stream;
  std::string m_first;       // The wall of the first recording in the file that is open; "" until it is read.
  std::string m_wall;        // Which names the set.
  std::uint64_t m_part = 0;  // 0: of no set.
  std::uint64_t m_next = 0;  // The number of the event that comes next.
  bool m_isFull = false;
};
