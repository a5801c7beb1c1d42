// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <ostream>
#include <string_view>

#include "tessel/statistics_members.h"

enum class StatisticsFormat { kText, kCsv, kJson };

/// Writes blocks of one kind, one after the other; `blocks` is a whole number of them.
///   kText  a table per block, by section; a layer that is nothing but zero bytes is only named
///   kCsv    a line of names with their units, then a line per block
///   kJson   an object per block, on a line of its own
void PrintStatistics(std::ostream& out, const kalStore::StatisticsKind& kind, std::string_view blocks,
                     StatisticsFormat format);
