// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tessel/settings_declaration.h"

namespace declare {

// What the outputs say of a setting alike.

/// The words of a string, without the spaces between them.
std::vector<std::string> Words(std::string_view text);

std::string Joined(const std::vector<std::string>& texts, std::string_view separator);

/// "1 to 120", "1 or more", "120 or less"; "" without a range.
std::string Range(const kalStore::SettingDeclaration& setting);

/// The default in words; "" without one.
std::string Default(const kalStore::SettingDeclaration& setting);

/// "deprecated since 2.0: use Video/MaxFps"
std::string Deprecation(const kalStore::SettingDeprecation& deprecation);

}  // namespace declare
