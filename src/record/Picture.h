// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "record/EventLines.h"
#include "record/LineText.h"
#include "record/StatisticsChanges.h"
#include "tessel/inspect.h"

namespace kalStore::internal {

/// Writes the members of a line that a setting's name and value are in, up to what a line has room for.
/// @param value  not valid: none
void WriteSetting(LineText& line, KalConfigGroup group, std::string_view name, const ConfigData& value,
                  RecordingShows shows);

/// What was there at a moment: calls, settings, subscriptions and bindings, statistics.
class Picture {
 public:
  /// Takes it.
  Picture();

  /// Appends its lines.
  void Append(LineBuffer& out, std::int64_t timeNs, EventLines& lines, StatisticsChanges& statistics) const;

 private:
  struct Call {
    InspectedCall call;
    std::vector<InspectedSetting> settings;
    std::vector<InspectedSubscription> subscriptions;
  };

  std::vector<Call> m_calls;
  std::vector<StatisticsCopy> m_statistics;
};

}  // namespace kalStore::internal
