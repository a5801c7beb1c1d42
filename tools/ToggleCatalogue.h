// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/KalFeatureToggleID.h"

/// A feature toggle as the catalogue has it.
struct ToggleInfo {
  kalStore::KalFeatureToggleID id;
  std::string_view key;
  std::string_view kind;  ///< bool, int, double or text
  std::string_view meaning;
};

/// All toggles, in the order of their ids.
std::span<const ToggleInfo> ToggleCatalogue();

/// Whether the key has the pattern in it; with * (any text) or ? (any letter) in the pattern, whether the
/// whole key fits it. Letter case does not count.
bool MatchesToggle(std::string_view pattern, std::string_view key);

/// The keys that some part of is nearest to the pattern, at most three, nearest first; none when none is
/// near.
std::vector<std::string_view> NearestToggles(std::string_view pattern);
