// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// The three ways in which a subscriber is notified.
enum class Way { kDirect, kPosted, kHandedOver };

inline constexpr Way kWays[] = {Way::kDirect, Way::kPosted, Way::kHandedOver};

inline std::string NameOf(Way way) {
  if (way == Way::kDirect) return "Direct";
  return way == Way::kPosted ? "Posted" : "HandedOver";
}
