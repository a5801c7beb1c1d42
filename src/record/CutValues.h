// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "record/EventLines.h"
#include "record/LineBuffer.h"
#include "tessel/inspect.h"
#include "tessel/journal.h"

namespace kalStore::internal {

/// The values that are stored at the moment and of which the journal has only the beginning: they are read
/// from their stores, and written whole.
class CutValues {
 public:
  /// Takes note of an event, in the order of their numbers.
  void Take(const JournalEvent& event, EventLines& lines);
  bool IsEmpty() const { return m_values.empty(); }

  /// By call.
  using Settings = std::map<std::uint32_t, std::vector<InspectedSetting>>;
  /// Reads the values from their stores.
  Settings Read() const;
  /// Appends a line for each value that is still the one of its event. Where that is not known yet, they are
  /// left for the next time.
  /// @param settings  as Read() returned them
  /// @param reader  at the first event that was not taken
  /// @param next  the number of that
  void Append(LineBuffer& out, std::int64_t startNs, const Settings& settings, JournalReader reader,
              std::uint64_t next);

 private:
  using Key = std::tuple<std::uint32_t, KalConfigGroup, std::string>;  // Call, group, name.
  struct Cut {
    std::uint64_t number;
    std::int64_t timeNs;
    std::string origin;
  };

  static Key keyOf(const JournalEvent& event) { return {event.callId, event.group, event.name.text}; }
  void forget(const JournalEvent& event);

  std::map<Key, Cut> m_values;
};

}  // namespace kalStore::internal
