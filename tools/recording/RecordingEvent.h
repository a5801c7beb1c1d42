// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/KalConfigGroup.h"
#include "tessel/json.h"

/// What a line of a recording says, see docs/guides/recordings.md. Members that it does not have are empty.
struct RecordingEvent {
  /// Who did it.
  struct Origin {
    std::optional<std::string> module, symbol, label, document;
    std::optional<std::uint64_t> line, column;
  };

  std::string type;
  double time = 0;  ///< Seconds from the start of the recording.
  std::optional<std::uint64_t> version, part, next, number, cause, call, told, count, references, id, thread;
  std::optional<kalStore::KalConfigGroup> group;
  std::optional<std::string> name, oldValue, newValue;
  std::optional<std::string> result, way, thrown, entity, event, wall, reason;
  std::optional<double> waitUs, runUs;
  std::vector<std::string> cut, hidden;  ///< The names of members.
  bool isTransient = false;
  bool isDropped = false;
  bool isPicture = false;
  Origin origin;
  json::Object members;  ///< Of a statistics object: numbers and strings.

  /// Whether the line begins a recording.
  bool IsBegin() const { return type == "recording" && !event; }
  /// Whether the line ends a recording.
  bool IsEnd() const { return type == "recording" && event; }
  /// Whether the line ends a file, and the recording goes on in the next one of its set.
  bool GoesOn() const { return IsEnd() && reason == "goes on in the next file"; }
  bool IsCut(std::string_view member) const;
  bool IsHidden(std::string_view member) const;
};

/// The types of lines that version 1 knows.
const std::vector<std::string>& RecordingTypes();

/// Reads a line. `event` is whole when the reason is empty.
/// @return Why the line is damaged; "" when it is not.
std::string ReadRecordingLine(const std::string& line, RecordingEvent& event);
