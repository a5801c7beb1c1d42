// SPDX-License-Identifier: Apache-2.0
#include "ToggleCatalogue.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "Ascii.h"
#include "Glob.h"

namespace {

constexpr std::size_t kSuggestions = 3;

constexpr ToggleInfo kToggles[] = {
#define KAL_FT(id, name, key, kind, meaning) {kalStore::KAL_FT_##name, key, #kind, meaning},
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
};

// How many letters of the pattern must be changed, inserted or removed to find it in the text.
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
  return kToggles;
}

bool MatchesToggle(std::string_view pattern, std::string_view key) {
  if (IsGlob(pattern)) return FitsGlob(pattern, key);
  return LowerCase(key).find(LowerCase(pattern)) != std::string::npos;
}

std::vector<std::string_view> NearestToggles(std::string_view pattern) {
  std::string text = LowerCase(pattern);
  std::erase_if(text, [](char letter) { return letter == '*' || letter == '?'; });
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const ToggleInfo& toggle : kToggles) {
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
