// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tessel/settings_declaration.h"

namespace declare {

/// A JSON Schema of the settings documents that set these settings, and the feature toggles: entries of a
/// group that has any are those declared, those of any other group may be all.
std::string JsonSchema(const std::vector<kalStore::SettingDeclaration>& settings);

}  // namespace declare
