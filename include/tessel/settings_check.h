// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Finds what import skips of a settings document, and what does not fit declarations.

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tessel/KalConfigGroup.h"
#include "tessel/export.h"
#include "tessel/settings_declaration.h"

namespace kalStore {

/// What can be wrong with a settings document, see IKalConfig::ApplyKalConfigs().
enum class SettingsProblem : std::int32_t {
  // The document is refused whole: SettingsEffect::kRefused.
  kNoJson,    ///< the text is malformed
  kNoObject,  ///< JSON, but not an object
  kZeroByte,  ///< a zero byte before the end of the object: import reads a C string, which ends there

  // The part is skipped: SettingsEffect::kSkipped.
  kUnknownGroup,   ///< no group has that name
  kNoArray,        ///< the group is not an array
  kNoEntry,        ///< the entry is not an object
  kNoMember,       ///< the entry has no "key", or no "value"
  kNoText,         ///< the "key" or "value" is not a string
  kEmptyName,      ///< the "key" is empty, or begins with a zero byte
  kRepeatedGroup,  ///< the group is repeated below, and only the last one is read

  // The part is imported, but most likely not what was meant: SettingsEffect::kImported.
  kRepeatedName,    ///< the name is repeated below in its group, and that value stays
  kRepeatedMember,  ///< the entry's "key" or "value" is repeated, and the last one counts
  kUnknownToggle,   ///< an entry of "Feature" with a name that no feature toggle has
  kUnknownName,     ///< the name is not among those that were given as known
  kDeprecatedName,  ///< the setting is declared as one that should not be used any more
  kWrongType,       ///< the value is not of the declared type: a typed read gives its default instead
  kOutOfRange,      ///< the value is less than the declared minimum, or greater than the maximum
  kNotAllowed,      ///< the value is none of those that are declared
};

/// What import does because of a problem.
enum class SettingsEffect : std::int32_t { kRefused, kSkipped, kImported };

/// What import does because of a problem.
/// @param problem  any
/// @return The effect.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// static_assert(EffectOf(SettingsProblem::kNoJson) == SettingsEffect::kRefused);
/// @endcode
constexpr SettingsEffect EffectOf(SettingsProblem problem) {
  if (problem <= SettingsProblem::kZeroByte) return SettingsEffect::kRefused;
  return problem <= SettingsProblem::kRepeatedGroup ? SettingsEffect::kSkipped : SettingsEffect::kImported;
}

/// One problem of a settings document, and where it is.
struct SettingsFinding {
  SettingsProblem problem = SettingsProblem::kNoJson;  ///< what is wrong
  std::string path;     ///< for example Audio[3].value, as the document names it; "" for the whole document
  std::string name;     ///< the group's or entry's name where the problem lies in it; any bytes
  std::string nearest;  ///< the known name that `name` is most likely meant to be, or the allowed value that
                        ///< the value is (kNotAllowed); "" when none is near
  std::string reason;   ///< in words, with `nearest`; has no bytes of the document, but may of declarations
  std::size_t offset = 0;  ///< bytes before the place
  std::size_t line = 0;    ///< of the place, from 1
  std::size_t column = 0;  ///< of the place, from 1, in bytes
};

/// An entry of a settings document that import sets.
struct SettingsEntry {
  KalConfigGroup group = KAL_CONFIG_GROUP_COMMON;  ///< the group of its array
  std::string name;                                ///< as the store takes it, up to its first zero byte
  std::string value;                               ///< any bytes
  bool stays = true;                               ///< no later entry sets the name again
};

/// The names that entries may have. A group that is missing may have any; "Feature" has the toggles besides.
using SettingsNames = std::map<KalConfigGroup, std::vector<std::string>>;

/// Finds everything in a settings document that import would refuse or skip, or that is most likely a
/// mistake; values of feature toggles are checked against FeatureToggleDeclarations(). The check needs no
/// store and changes nothing. Throws nothing but what a failed allocation throws.
/// @param text  the document
/// @return The findings in the order of the text; none for a document that is fine. A document that is
/// refused has that one finding. Where very many names are unknown, the nearest known name is given for the
/// first of them only.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const auto findings = CheckSettings(R"({"Audoi":[]})");
/// assert(findings.size() == 1 && findings[0].nearest == "Audio" && findings[0].column == 2);
/// assert(EffectOf(findings[0].problem) == SettingsEffect::kSkipped);
/// @endcode
TESSEL_API std::vector<SettingsFinding> CheckSettings(const std::string& text);

/// The same, and finds the names that are not known.
/// @param text  the document
/// @param known  the names of each group that has only known ones
/// @return As CheckSettings(const std::string&).
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const std::string text = R"({"Video":[{"key":"maxfps","value":"15"}]})";
/// assert(CheckSettings(text).empty());
/// assert(CheckSettings(text, {{KAL_CONFIG_GROUP_VIDEO, {"MaxFps"}}})[0].nearest == "MaxFps");
/// @endcode
TESSEL_API std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known);

/// The same, and finds what does not fit declarations: values that are not of their type, out of range or not
/// allowed, and deprecated names. In a group that has declarations, names that are neither declared nor known
/// are unknown.
/// @param text  the document
/// @param known  the names of each group that has only known ones, beside those declared
/// @param declared  as ReadDeclarations() returns them
/// @return As CheckSettings(const std::string&).
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const SettingsDeclarations declared = ReadDeclarations({R"({"settings":[
///   {"group": "Video", "name": "MaxFps", "type": "int", "default": 30, "minimum": 1, "maximum": 120}]})"});
/// const std::string text = R"({"Video":[{"key":"MaxFps","value":"fast"}]})";
/// const auto findings = CheckSettings(text, {}, declared.settings);
/// assert(findings.size() == 1 && findings[0].problem == SettingsProblem::kWrongType);
/// assert(findings[0].path == "Video[0].value" && findings[0].column == 35);
/// @endcode
TESSEL_API std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known,
                                                      const std::vector<SettingDeclaration>& declared);

/// What import makes of a settings document.
struct SettingsContents {
  std::vector<SettingsEntry> entries;     ///< in the order in which import sets them
  std::vector<SettingsFinding> findings;  ///< as CheckSettings() returns them
};

/// Reads a settings document as import does, without a store.
/// @param text  the document
/// @return What import sets, and what it makes of the rest.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const auto contents = ReadSettings(R"({"Video":[{"key":"MaxFps","value":"15"}],"Audoi":[]})");
/// assert(contents.entries.size() == 1 && contents.entries[0].value == "15");
/// assert(contents.findings.size() == 1);
/// @endcode
TESSEL_API SettingsContents ReadSettings(const std::string& text);

}  // namespace kalStore
