// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "record/LineBuffer.h"
#include "record/LongWait.h"
#include "tessel/journal.h"
#include "tessel/record.h"

namespace kalStore::internal {

/// What a recording calls a kind of statistics objects.
const char* EntityName(std::int32_t type);

/// Writes events of the journal as lines of a recording.
class EventLines {
 public:
  /// @param startNs  the recording's start, on std::chrono::steady_clock
  /// @param filter  must outlive this; so must the next one
  /// @param loaderWait  shows a wait for the lock of the loader, which names code
  EventLines(std::int64_t startNs, const RecordingFilter& filter, LongWait& loaderWait)
      : m_startNs(startNs), m_filter(filter), m_loaderWait(loaderWait) {}

  /// What the recording shows of a setting; nothing of it when the filter throws.
  RecordingShows Shows(std::uint32_t callId, KalConfigGroup group, std::string_view name) const;

  /// Appends the line, and before it one of the events that were missed.
  void Append(LineBuffer& out, const JournalEvent& event);
  void AppendLost(LineBuffer& out, std::int64_t timeNs, std::uint64_t count) const;

  /// Who did it, a JSON object, until the next call; "" when nothing is known.
  std::string_view Origin(const JournalEvent& event);
  /// Names code again from now on: a module may have left, and another one come to its place.
  void ForgetCode() { m_code.clear(); }

 private:
  // What is known of a caller: members of an origin, and some whole origins by label.
  struct Code {
    std::string members;
    std::vector<std::pair<std::string, std::string>> origins;
  };

  RecordingShows showsOf(const JournalEvent& event) const;
  Code& codeOf(const void* caller);

  const std::int64_t m_startNs;
  const RecordingFilter& m_filter;
  LongWait& m_loaderWait;
  std::unordered_map<const void*, Code> m_code;  // By the caller.
  std::string m_origin;                          // The one that was asked for last, unless it is in there.
};

}  // namespace kalStore::internal
