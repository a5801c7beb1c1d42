// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "recording/RecordingEvent.h"

/// Reads a recording as its bytes arrive, and has one line of it in memory at most.
class RecordingReader {
 public:
  /// The version of the format that is read.
  static constexpr unsigned kVersion = 1;
  /// A longer line is damaged.
  static constexpr std::size_t kLongestLine = std::size_t{1} << 20;

  enum class Fault {
    kDamaged,  ///< A line is; reading goes on.
    kRefused,  ///< It is no recording, or of a newer version; nothing more is read.
    kCutOff,   ///< The end is missing. It is what a crash leaves, and no damage.
  };

  /// What becomes of each line. The line's text has no line feed; it is borrowed, as the event is.
  struct Sink {
    std::function<void(const RecordingEvent& event, const std::string& line)> event;
    std::function<void(Fault fault, std::size_t line, const std::string& reason)> fault;
  };

  explicit RecordingReader(Sink sink);

  /// Reads more bytes.
  /// @return False when the recording is refused: nothing more is read.
  bool Feed(std::string_view bytes);
  /// There are no more bytes.
  void Finish();
  /// Whether the last line ended the recording.
  bool HasEnded() const { return m_hasEnded; }

 private:
  void append(std::string_view bytes);
  void endLine();
  void refuse(const std::string& reason);

  const Sink m_sink;
  std::string m_line;
  RecordingEvent m_event;
  std::size_t m_number = 1;  // Of the line.
  bool m_isTooLong = false;  // The line; the rest of it is not kept.
  bool m_isRefused = false;
  bool m_hasEnded = false;
};
