// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tessel/settings_declaration.h"

/// The settings that declarations files declare together. Throws CommandError when a file cannot be read, or
/// has a mistake: the message has a line for each, with the place.
std::vector<kalStore::SettingDeclaration> ReadDeclarationFiles(const std::vector<std::string>& files);
