// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "record/LineBuffer.h"
#include "tessel/inspect.h"

namespace kalStore::internal {

/// A statistics object, with its blocks byte by byte.
struct StatisticsCopy {
  InspectedStatistics object;
  std::string bytes;
};

/// Copies all statistics objects.
std::vector<StatisticsCopy> CopyStatistics();

/// The members of the statistics objects that changed since they were looked at last. The first time, those
/// that are not 0 and not "".
class StatisticsChanges {
 public:
  /// Appends a line for each object of which a member changed.
  void Append(LineBuffer& out, std::int64_t timeNs, const std::vector<StatisticsCopy>& copies);
  /// Appends a line of a picture for each object, as if none had been looked at.
  void AppendPicture(LineBuffer& out, std::int64_t timeNs, const std::vector<StatisticsCopy>& copies);
  /// An object was made: it begins like one that was not looked at.
  void Forget(std::int32_t type, std::uint32_t callId);

 private:
  enum class Lines { kChanges, kPicture };
  void append(LineBuffer& out, std::int64_t timeNs, const std::vector<StatisticsCopy>& copies, Lines lines);

  // Each object's blocks.
  std::map<std::pair<std::int32_t, std::uint32_t>, std::string> m_looked;
};

}  // namespace kalStore::internal
