// SPDX-License-Identifier: Apache-2.0
#include "declare/JsonSchema.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string_view>

#include "Printable.h"
#include "declare/NumberPattern.h"
#include "declare/Words.h"
#include "tessel/TypedValue.h"
#include "tessel/json.h"

namespace declare {
namespace {

using kalStore::KalConfigGroup;
using kalStore::SettingDeclaration;
using kalStore::SettingType;

// An object that is written member by member.
class Object {
 public:
  Object& Member(const std::string& name, const json::Value& value) {
    m_object[name] = value;
    return *this;
  }
  operator json::Value() const { return m_object; }

 private:
  json::Object m_object;
};

json::Value ArrayOf(const std::vector<std::string>& strings) {
  json::Array array;
  for (const std::string& string : strings) array.push_back(string);
  return array;
}

// What a schema says of a setting beside the form of its value.
std::string Description(const SettingDeclaration& setting) {
  std::vector<std::string> parts;
  if (!setting.description.empty()) parts.push_back(setting.description);
  if (const std::string range = Range(setting); !range.empty()) parts.push_back("Range: " + range);
  if (!setting.unit.empty()) parts.push_back("Unit: " + setting.unit);
  if (!setting.since.empty()) parts.push_back("Since: " + setting.since);
  if (setting.deprecated) parts.push_back(Deprecation(*setting.deprecated));
  return Joined(parts, "\n");
}

template <class T>
std::string WholeNumbers(const SettingDeclaration& setting) {
  using Limits = std::numeric_limits<T>;
  if (!setting.values.empty()) {
    std::vector<std::string> patterns;
    for (const std::string& value : setting.values) {
      const std::int64_t number = kalStore::ReadAs<std::int64_t>(ConfigData(value)).value_or(0);
      patterns.push_back(WholeNumberPattern(number, number, Limits::is_signed));
    }
    return Joined(patterns, "|");
  }
  const auto bound = [](const ConfigData& given, std::int64_t otherwise) {
    return kalStore::ReadAs<std::int64_t>(given).value_or(otherwise);
  };
  return WholeNumberPattern(bound(setting.minimum, Limits::min()), bound(setting.maximum, Limits::max()),
                            Limits::is_signed);
}

json::Value ValueSchema(const SettingDeclaration& setting) {
  Object schema;
  if (setting.defaultValue.IsValid()) schema.Member("default", Default(setting));
  switch (setting.type) {
    case SettingType::kBool: {
      // An editor offers the two words; what else is taken need not be written.
      json::Array either;
      either.push_back(Object().Member("enum", ArrayOf({"true", "false"})));
      either.push_back(Object().Member("pattern", BoolPattern()));
      return schema.Member("anyOf", either);
    }
    case SettingType::kInt:
      return schema.Member("pattern", WholeNumbers<int>(setting));
    case SettingType::kUInt:
      return schema.Member("pattern", WholeNumbers<unsigned int>(setting));
    case SettingType::kInt64:
    case SettingType::kDuration:
      return schema.Member("pattern", WholeNumbers<std::int64_t>(setting));
    case SettingType::kDouble:
      return schema.Member("pattern", NumberPattern());
    case SettingType::kString:
    case SettingType::kEnum:
      break;
  }
  return setting.values.empty() ? schema : schema.Member("enum", ArrayOf(setting.values));
}

json::Value NameSchema(const SettingDeclaration& setting) {
  Object schema;
  schema.Member("const", setting.name);
  if (const std::string words = Description(setting); !words.empty()) schema.Member("description", words);
  return setting.deprecated ? schema.Member("deprecated", true) : schema;
}

json::Value Entry(const json::Value& key) {
  return Object()
      .Member("type", "object")
      .Member("required", ArrayOf({"key", "value"}))
      .Member("properties", Object().Member("key", key).Member("value", Object().Member("type", "string")));
}

json::Value EntryOf(const std::vector<SettingDeclaration>& settings) {
  json::Array names, values;
  for (const SettingDeclaration& setting : settings) {
    names.push_back(NameSchema(setting));
    const Object name = Object().Member("key", Object().Member("const", setting.name));
    const Object value = Object().Member("value", ValueSchema(setting));
    values.push_back(
        Object()
            .Member("if", Object().Member("required", ArrayOf({"key"})).Member("properties", name))
            .Member("then", Object().Member("properties", value)));
  }
  json::Value entry = Entry(Object().Member("anyOf", names));
  entry["allOf"] = values;
  return entry;
}

// JSON text on lines, two spaces for each level.
std::string Indented(std::string_view json) {
  std::string text;
  std::string line = "\n";
  bool isString = false;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const char c = json[i];
    if (isString) {
      text += c;
      if (c == '\\') text += json[++i];
      if (c == '"') isString = false;
      continue;
    }
    if (json.substr(i, 2) == "{}") {  // No array is empty.
      text += "{}";
      ++i;
      continue;
    }
    if (c == '}' || c == ']') {
      line.resize(line.size() - 2);
      text += line;
    }
    text += c;
    isString = c == '"';
    if (c == '{' || c == '[') line += "  ";
    if (c == '{' || c == '[' || c == ',') text += line;
    if (c == ':') text += ' ';
  }
  return text + "\n";
}

}  // namespace

std::string JsonSchema(const std::vector<SettingDeclaration>& settings) {
  std::map<KalConfigGroup, std::vector<SettingDeclaration>> groups;
  for (const SettingDeclaration& setting : settings) groups[setting.group].push_back(setting);
  std::vector<SettingDeclaration>& toggles = groups[kalStore::KAL_CONFIG_GROUP_FEATURE];
  for (const SettingDeclaration& toggle : kalStore::FeatureToggleDeclarations()) {
    if (std::ranges::find(toggles, toggle.name, &SettingDeclaration::name) == toggles.end()) {
      toggles.push_back(toggle);
    }
  }

  Object members;
  for (std::int32_t id = 0; id < kalStore::KAL_CONFIG_GROUP_LAST; ++id) {
    const auto group = static_cast<KalConfigGroup>(id);
    const auto declared = groups.find(group);
    const json::Value entry = declared != groups.end()
                                  ? EntryOf(declared->second)
                                  : Entry(Object().Member("type", "string").Member("minLength", 1));
    members.Member(KalConfigGroup2GroupName(group), Object().Member("type", "array").Member("items", entry));
  }
  const json::Value schema = Object()
                                 .Member("$schema", "https://json-schema.org/draft/2020-12/schema")
                                 .Member("title", "Settings document")
                                 .Member("type", "object")
                                 .Member("properties", members)
                                 .Member("additionalProperties", false);
  return Indented(StandardJson(json::Serialize(schema)));
}

}  // namespace declare
