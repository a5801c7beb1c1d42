// SPDX-License-Identifier: Apache-2.0
#include "ConfigPath.h"

#include <array>
#include <cstddef>

#include "CommandError.h"
#include "DidYouMean.h"
#include "Printable.h"

using kalStore::KalConfigGroup;

std::span<const std::string> GroupNames() {
  static const auto kNames = [] {
    std::array<std::string, kalStore::KAL_CONFIG_GROUP_LAST> names;
    for (std::size_t group = 0; group < names.size(); ++group) {
      names[group] = kalStore::KalConfigGroup2GroupName(static_cast<KalConfigGroup>(group));
    }
    return names;
  }();
  return kNames;
}

const std::string& GroupName(KalConfigGroup group) {
  return GroupNames()[static_cast<std::size_t>(group)];
}

std::string GroupsHelp() {
  constexpr std::size_t kPerLine = 7;
  std::string help = "Groups:";
  for (std::size_t group = 0; group < GroupNames().size(); ++group) {
    help += (group % kPerLine == 0 ? "\n  " : " ") + GroupNames()[group];
  }
  return help;
}

std::string UnknownGroup(const std::string& name) {
  return "unknown group " + Quoted(name) + DidYouMean(name, GroupNames());
}

ConfigPath ParseConfigPath(std::string_view option, std::string_view text) {
  const auto refuse = [&](const std::string& reason) {
    return UsageError(std::string(option) + " " + Quoted(text) + ": " + reason);
  };
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) throw refuse("expected GROUP/NAME");
  const std::string groupName(text.substr(0, slash));
  const KalConfigGroup group = kalStore::GroupName2KalConfigGroup(groupName);
  if (!kalStore::IsConfigGroup(group)) throw refuse(UnknownGroup(groupName));
  if (slash + 1 == text.size()) throw refuse("the name is empty");
  return {group, std::string(text.substr(slash + 1))};
}

std::string ShownPath(KalConfigGroup group, std::string_view name) {
  return GroupName(group) + "/" + Printable(name);
}
