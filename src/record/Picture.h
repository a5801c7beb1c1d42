// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "record/EventLines.h"
#include "record/StatisticsChanges.h"
#include "tessel/inspect.h"

namespace kalStore::internal {

/// What was there at a moment: calls, settings, subscriptions and bindings, statistics.
class Picture {
 public:
  /// Takes it.
  Picture();

  /// Appends its lines.
  void Append(std::string& out, std::int64_t timeNs, EventLines& lines, StatisticsChanges& statistics) const;

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
