// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "documents/PlacedValue.h"
#include "documents/SettingValue.h"
#include "tessel/settings_declaration.h"

namespace kalStore::internal {

/// A declaration, and where what is checked against others lies.
struct PlacedDeclaration {
  SettingDeclaration setting;
  std::string path;                  ///< "settings[3]"
  const char* place = nullptr;       ///< of the name
  const char* replacedBy = nullptr;  ///< null when nothing replaces it
};

/// `string` as JSON has it, in quotes.
std::string InQuotes(std::string_view string);

/// " (did you mean \"NAME\"?)" with the name nearest to the string, or "" when none is near.
std::string Suggestion(std::string_view string, std::span<const std::string_view> names);

/// Reads the declarations of one JSON text, each by itself. The text must outlive what is read.
class DeclarationsReader {
 public:
  explicit DeclarationsReader(std::string_view text) : m_text(text) {}

  void Read();

  /// Those that are right in themselves.
  std::vector<PlacedDeclaration>& Settings() { return m_settings; }
  std::vector<DeclarationFinding>& Findings() { return m_findings; }

  void AddFinding(const char* at, std::string path, std::string reason);

 private:
  using Names = std::span<const std::string_view>;

  // An object that is read: each member is found by its name.
  struct Object {
    const PlacedValue& value;
    std::string path;

    std::string PathOf(std::string_view member) const;
    const PlacedValue* Find(std::string_view member) const;
  };

  // The object's members are known ones, each there once.
  Object open(const PlacedValue& value, std::string path, Names members);
  // Null, with a finding, where the member is missing or of another kind.
  const PlacedValue* require(const Object& object, std::string_view member);
  const PlacedValue* requireString(const Object& object, std::string_view member);
  std::string readWords(const Object& object, std::string_view member);
  bool isString(const PlacedValue& value, const std::string& path);
  void expect(const PlacedValue& value, std::string path, const std::string& expected);

  void readSetting(const PlacedValue& element, std::string path);
  void readName(const Object& object, PlacedDeclaration& declaration);
  void readGroup(const Object& object, SettingDeclaration& setting);
  bool readType(const Object& object, SettingDeclaration& setting);
  void readUnit(const Object& object, SettingDeclaration& setting);
  void readRange(const Object& object, SettingDeclaration& setting);
  void readValues(const Object& object, SettingDeclaration& setting);
  void readDefault(const Object& object, SettingDeclaration& setting);
  void readIdentifier(const Object& object, SettingDeclaration& setting);
  void readDeprecation(const Object& object, PlacedDeclaration& declaration);

  // A value of the setting's type as a store holds it, and within its range; invalid, with a finding, for any
  // other.
  ConfigData readValue(const PlacedValue& value, const std::string& path, const SettingDeclaration& setting);
  ConfigData readOfType(const PlacedValue& value, const std::string& path, SettingType type);

  const std::string_view m_text;
  std::string m_nameSpace = "settings";
  std::vector<PlacedDeclaration> m_settings;
  std::vector<DeclarationFinding> m_findings;
};

}  // namespace kalStore::internal
