// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/RecordingEvent.h"

/// The settings of a recording's calls, as its events change them.
class RecordedSettings {
 public:
  /// The settings of one call.
  class Call {
   public:
    void Take(const RecordingEvent& event);

    /// The values as a settings document: applied to an empty store, it gives them.
    std::string Document() const;
    /// What the document lacks, because the recording does: each one a sentence's part.
    std::vector<std::string> Gaps() const;

   private:
    struct Value {
      std::string text;
      bool isWhole = false;
    };

    std::map<std::pair<kalStore::KalConfigGroup, std::string>, Value> m_values;
    bool m_hasUnknownNames = false;
  };

  void Take(const RecordingEvent& event);

  const std::map<std::uint64_t, Call>& Calls() const { return m_calls; }
  /// How many events are missing, so that values may be others.
  std::uint64_t LostCount() const { return m_lost; }

 private:
  std::map<std::uint64_t, Call> m_calls;
  std::set<std::uint64_t> m_ended;  // Calls in whose stores something may still be set, to no effect.
  std::uint64_t m_lost = 0;
};

/// A moment of a recording, on the command line FILE@SECONDS.
struct RecordedMoment {
  std::string file;
  std::optional<double> seconds;  ///< None: the recording's end.
};

/// The moment that the string names; none when it is no such string, or the name of a file as a whole.
std::optional<RecordedMoment> ParseMoment(const std::string& text);

/// A call's settings at a moment.
struct SettingsAtMoment {
  std::string document;
  int exitStatus;  ///< kExitFine; kExitFindings: values are missing; kExitNotUsable: the file is damaged.
};

/// Reads a call's settings; without a call, those of the only one. Gaps are written to standard error. Throws
/// CommandError when there is no such call at the moment.
SettingsAtMoment ReadSettingsAt(const RecordedMoment& moment, std::optional<unsigned> call);
