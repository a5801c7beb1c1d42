// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tessel/settings_declaration.h"

namespace kalStore::internal {

/// What is wrong with a value of a declared setting: the first that holds.
enum class ValueFault { kNone, kWrongType, kOutOfRange, kNotAllowed };

ValueFault FaultOf(const SettingDeclaration& setting, const ConfigData& value);

/// Whether values of the type have an order, and so a setting of it a range.
bool HasRange(SettingType type);

/// Compares two values of a type that has a range.
bool IsLess(SettingType type, const ConfigData& left, const ConfigData& right);

// What a value must be, in words.

/// "a whole number from 0 to 4294967295"
std::string ExpectedType(SettingType type);
/// "from 1 to 120", "1 or more", "120 or less"
std::string ExpectedRange(const SettingDeclaration& setting);
/// "\"h264\", \"vp8\""
std::string ExpectedValues(const SettingDeclaration& setting);

}  // namespace kalStore::internal
