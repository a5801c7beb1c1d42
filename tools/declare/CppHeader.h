// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tessel/settings_declaration.h"

namespace declare {

/// A header with a ConfigKey for each setting, and an enum for each that has one. `sources` are the files
/// that declare them.
std::string CppHeader(const std::vector<kalStore::SettingDeclaration>& settings,
                      const std::vector<std::string>& sources);

}  // namespace declare
