// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tessel/journal.h"

/// How a subscriber is notified; here, one of kWays.
using Way = kalStore::JournalWay;

inline constexpr Way kWays[] = {Way::kDirect, Way::kPosted, Way::kHandedOver};

inline std::string NameOf(Way way) {
  if (way == Way::kDirect) return "Direct";
  return way == Way::kPosted ? "Posted" : "HandedOver";
}
