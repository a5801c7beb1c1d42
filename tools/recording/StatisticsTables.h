// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recording/BufferedFile.h"
#include "recording/RecordingEvent.h"

/// The statistics of a recording as tables in CSV, one for each call and kind of statistics object: a line of
/// names, then a line for each time that members were recorded, with the last value of each member.
///
/// A table's columns are known only when the whole recording was read: it is read twice.
class StatisticsTables {
 public:
  /// The first reading.
  void Learn(const RecordingEvent& event);
  /// Where the tables will be.
  std::vector<std::string> Files(const std::string& folder) const;
  /// Makes the folder, and in it the tables, call-7-video.csv for example. Throws CommandError; so do the
  /// others.
  void Begin(const std::string& folder);
  /// The second reading.
  void Write(const RecordingEvent& event);
  void Finish();

 private:
  struct Table {
    std::map<std::string, std::string> values;  // By member; "" when there is none.
    std::optional<BufferedFile> file;
  };

  static void forget(Table& table);

  std::map<std::pair<std::uint64_t, std::string>, Table> m_tables;
};
