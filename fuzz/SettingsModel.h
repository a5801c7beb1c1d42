// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fuzz {

constexpr std::uint32_t kGroups = 13;
extern const std::array<std::string, kGroups> kGroupNames;

/// The values that a store must hold, by group and name.
using SettingsValues = std::array<std::map<std::string, std::string>, kGroups>;

struct SettingsEntry {
  std::uint32_t group;
  std::string name;
  std::string value;
};

/// The entries of a settings document that a store takes, in the order in which it takes them; none when the
/// text is no JSON object.
std::optional<std::vector<SettingsEntry>> EntriesOf(const std::string& document);

/// The settings document of the groups that `mask` selects.
std::string DocumentOf(const SettingsValues& values, std::uint32_t mask);

}  // namespace fuzz
