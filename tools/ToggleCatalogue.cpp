// SPDX-License-Identifier: Apache-2.0
#include "ToggleCatalogue.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "Ascii.h"
#include "Glob.h"
#include "tessel/settings_declaration.h"

namespace {

constexpr std::size_t kSuggestions = 3;

constexpr std::string_view kKinds[] = {
#define KAL_FT(id, name, key, kind, meaning) #kind,
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
};

std::vector<ToggleInfo> MakeCatalogue() {
  std::vector<ToggleInfo> toggles;
  for (kalStore::SettingDeclaration& toggle : kalStore::FeatureToggleDeclarations()) {
    const std::size_t id = toggles.size();
    toggles.push_back({static_cast<kalStore::KalFeatureToggleID>(id), std::move(toggle.name), kKinds[id],
                       std::move(toggle.description), std::move(toggle.minimum), std::move(toggle.maximum)});
  }
  return toggles;
}

// How many letters of the pattern must be changed, inserted or removed to find it in the string. Other
// suggestions compare a whole name with whole names.
std::size_t DistanceToPart(std::string_view pattern, std::string_view text) {
  std::vector<std::size_t> column(pattern.size() + 1);
  for (std::size_t i = 0; i <= pattern.size(); ++i) column[i] = i;
  std::size_t least = pattern.size();
  for (const char letter : text) {
    std::size_t diagonal = column[0];  // Stays 0: the part may begin at any letter, and end at any.
    for (std::size_t i = 1; i <= pattern.size(); ++i) {
      const std::size_t changed = diagonal + (pattern[i - 1] == letter ? 0 : 1);
      diagonal = column[i];
      column[i] = std::min({changed, column[i] + 1, column[i - 1] + 1});
    }
    least = std::min(least, column.back());
  }
  return least;
}

}  // namespace

std::span<const ToggleInfo> ToggleCatalogue() {
  static const std::vector<ToggleInfo> toggles = MakeCatalogue();
  return toggles;
}

bool MatchesToggle(std::string_view pattern, std::string_view key) {
  if (IsGlob(pattern)) return FitsGlob(pattern, key);
  return LowerCase(key).find(LowerCase(pattern)) != std::string::npos;
}

std::vector<std::string_view> NearestToggles(std::string_view pattern) {
  std::string text = LowerCase(pattern);
  std::erase_if(text, [](char letter) { return letter == '*' || letter == '?'; });
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const ToggleInfo& toggle : ToggleCatalogue()) {
    const std::size_t distance = DistanceToPart(text, LowerCase(toggle.key));
    if (distance <= text.size() / 3) near.emplace_back(distance, toggle.key);
  }
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string_view> keys;
  for (const auto& [distance, key] : near) {
    if (keys.size() < kSuggestions && distance == near.front().first) keys.push_back(key);
  }
  return keys;
}
