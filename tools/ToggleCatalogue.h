// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/KalFeatureToggleID.h"
#include "util/ConfigData.h"

/// A feature toggle as the catalogue has it.
struct ToggleInfo {
  kalStore::KalFeatureToggleID id;
  std::string key;
  std::string_view kind;  ///< bool, int, double or text
  std::string meaning;
  ConfigData minimum;  ///< of its value; invalid when there is none
  ConfigData maximum;  ///< likewise
};

/// All toggles, in the order of their ids; the end mark is none.
std::span<const ToggleInfo> ToggleCatalogue();

/// Whether the key has the pattern in it; with * (any string) or ? (any letter) in the pattern, whether the
/// whole key fits it. Letter case does not count.
bool MatchesToggle(std::string_view pattern, std::string_view key);

/// The keys that some part of is nearest to the pattern, at most three, nearest first; none when none is
/// near.
std::vector<std::string_view> NearestToggles(std::string_view pattern);
