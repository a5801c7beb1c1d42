// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tessel/settings_check.h"

/// Adds the names that a list gives to those that are known. A list is a JSON object of groups, each an array
/// of names; an entry of a settings document counts as its key, so a document or a dump is a list too.
/// Throws CommandError when the file cannot be read or is no such list.
void ReadNamesList(const std::string& file, kalStore::SettingsNames& names);
