// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tessel/KalConfigGroup.h"

/// A value's place in a store, written GROUP/NAME.
struct ConfigPath {
  kalStore::KalConfigGroup group;
  std::string name;
};

/// The names of the groups of a store, in the order of their numbers.
std::span<const std::string> GroupNames();

const std::string& GroupName(kalStore::KalConfigGroup group);

/// The part of a command's help that lists them.
std::string GroupsHelp();

/// Says that no group has that name, and which one may be meant.
std::string UnknownGroup(const std::string& name);

/// Reads GROUP/NAME; everything after the first slash is the name. Throws UsageError, which names `option`.
ConfigPath ParseConfigPath(std::string_view option, std::string_view text);

/// GROUP/NAME as it can be shown.
std::string ShownPath(kalStore::KalConfigGroup group, std::string_view name);
