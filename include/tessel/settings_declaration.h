// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// What a setting is called, may be and is for, as a file declares it; and that file's reader.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tessel/KalConfigGroup.h"
#include "tessel/export.h"
#include "util/ConfigData.h"

namespace kalStore {

/// What a declared setting's value is. A store holds the string of each; what else it holds is no such value.
enum class SettingType : std::int32_t {
  kBool,      ///< "true", "false", in any letter case, or a number: 0 is false
  kInt,       ///< a whole number of 32 bits
  kUInt,      ///< one without a sign
  kInt64,     ///< a whole number of 64 bits
  kDouble,    ///< a number
  kString,    ///< any string
  kEnum,      ///< one of the declaration's values
  kDuration,  ///< a whole number, 64 bits, of the declaration's unit
};

/// That a setting should not be used any more.
struct SettingDeprecation {
  std::string since;       ///< the version from which on; "" when it is not given
  std::string replacedBy;  ///< what to use instead, GROUP/NAME; "" when there is nothing
};

/// A setting, declared: what it is called, what it may be, and what it is for.
struct SettingDeclaration {
  KalConfigGroup group = KAL_CONFIG_GROUP_COMMON;  ///< 0 to 12
  std::string name;                                ///< not empty
  SettingType type = SettingType::kString;         ///< of the value
  ConfigData defaultValue;                         ///< as a store holds it; invalid when there is none
  ConfigData minimum;               ///< the least value of a number or duration; invalid when there is none
  ConfigData maximum;               ///< the greatest likewise
  std::vector<std::string> values;  ///< those allowed, as a store holds them; empty when all of the type are
  std::string unit;                 ///< of a duration ns, us, ms, s, min or h; otherwise in words, or ""
  std::string description;          ///< in words, or ""
  std::string since;                ///< the version that has it first, or ""
  std::optional<SettingDeprecation> deprecated;  ///< none for a setting in use
  std::string nameSpace;                         ///< where C++ code has it, for example "media::settings"
  std::string identifier;                        ///< what C++ code calls it, for example "VideoMaxFps"
  std::vector<std::string> enumerators;          ///< what C++ code calls each of the values of a kEnum
};

/// One mistake in declarations, and where it is.
struct DeclarationFinding {
  std::size_t document = 0;  ///< which of the texts has it, from 0
  std::string path;          ///< for example settings[3].default; "" for the whole document
  std::string reason;        ///< in words, on one line; may hold bytes of the document
  std::size_t offset = 0;    ///< bytes before the place
  std::size_t line = 0;      ///< of the place, from 1
  std::size_t column = 0;    ///< of the place, from 1, in bytes
};

/// What declarations say.
struct SettingsDeclarations {
  std::vector<SettingDeclaration> settings;  ///< in the order of the texts; none when there are findings
  std::vector<DeclarationFinding> findings;  ///< in the order of the texts; none for declarations to be used
};

/// Reads the declarations of settings: JSON, see the guide on declared settings. The texts make one list: no
/// setting is declared twice, and one may be replaced by another's. Throws nothing but what a failed
/// allocation throws.
/// @param texts  the contents of each file
/// @return The settings, or what is wrong with them.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const SettingsDeclarations declared = ReadDeclarations({R"({"settings":[
///   {"group": "Video", "name": "MaxFps", "type": "int", "default": 30, "minimum": 1}]})"});
/// assert(declared.findings.empty() && declared.settings[0].defaultValue == ConfigData(30));
///
/// const auto findings = ReadDeclarations({R"({"settings":[
///   {"group": "Vidoe", "name": "MaxFps", "type": "int", "default": 30}]})"}).findings;
/// assert(findings[0].reason == "unknown group \"Vidoe\" (did you mean \"Video\"?)");
/// assert(findings[0].path == "settings[0].group" && findings[0].line == 2);
/// @endcode
TESSEL_API SettingsDeclarations ReadDeclarations(const std::vector<std::string>& texts);

/// The feature toggles of KalFeatureToggles.def as declarations, in the order of their ids and without the
/// end mark. None has a default: a toggle that is not set counts as on.
/// @return One declaration for each toggle.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const SettingDeclaration level = FeatureToggleDeclarations()[KAL_FT_NoiseSuppressionLevel];
/// assert(level.type == SettingType::kInt && level.maximum == ConfigData(4));
/// @endcode
TESSEL_API std::vector<SettingDeclaration> FeatureToggleDeclarations();

/// The name that declarations give to a type.
/// @param type  any
/// @return For example "uint"; "" for a number that is no type.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(std::string(SettingTypeName(SettingType::kUInt)) == "uint");
/// @endcode
TESSEL_API const char* SettingTypeName(SettingType type);

}  // namespace kalStore
