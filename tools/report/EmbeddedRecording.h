// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "recording/RecordingEvent.h"
#include "report/EventColumns.h"

/// A recording as the page has it in it: data of scripts that no browser runs, in parts that it reads one
/// after the other.
class EmbeddedRecording {
 public:
  /// Writes the parts for `number`, the recording's place on the page, behind what is in `out`.
  EmbeddedRecording(std::string& out, std::size_t number, const std::string& name);
  /// Ends the last part.
  ~EmbeddedRecording();
  EmbeddedRecording(const EmbeddedRecording&) = delete;
  EmbeddedRecording& operator=(const EmbeddedRecording&) = delete;

  void Add(const RecordingEvent& event);

 private:
  void endPart();

  std::string& m_out;
  const std::string m_tag;
  EventColumns m_events;
};
