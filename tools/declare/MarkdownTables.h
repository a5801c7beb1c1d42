// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tessel/settings_declaration.h"

namespace declare {

/// The settings for people: a table for each group, in GitHub's Markdown.
std::string MarkdownTables(const std::vector<kalStore::SettingDeclaration>& settings);

}  // namespace declare
