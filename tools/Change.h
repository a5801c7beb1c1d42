// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/KalConfigGroup.h"
#include "util/ConfigData.h"

/// A value that became another one. The name is borrowed.
struct Change {
  kalStore::KalConfigGroup group;
  std::string_view name;
  ConfigData before;  ///< Invalid: there was none.
  ConfigData after;   ///< Invalid: there is none any more.
};

/// Writes the change on a line, coloured where that is wanted.
void PrintChange(std::ostream& out, const Change& change);

/// Writes the change as a JSON object on a line. It begins with the member `label`, unless that is empty.
void PrintChangeAsJson(std::ostream& out, const Change& change, std::string_view label = "",
                       std::string_view labelValue = "");

/// "3 new, 1 changed": the counts that are not zero, or "no entries".
std::string ChangeCounts(const std::vector<Change>& changes, std::size_t unchanged = 0,
                         std::size_t skipped = 0);

/// The value in quotes, or "none".
std::string ShownValue(const ConfigData& value);
