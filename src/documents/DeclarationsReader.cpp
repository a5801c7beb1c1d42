// SPDX-License-Identifier: Apache-2.0
#include "documents/DeclarationsReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <utility>

#include "documents/GroupOrder.h"
#include "documents/Identifier.h"
#include "documents/NearestName.h"
#include "json/Writer.h"
#include "tessel/TypedValue.h"

namespace kalStore::internal {
namespace {

constexpr std::string_view kDocumentMembers[] = {"$schema", "namespace", "settings"};
constexpr std::string_view kSettingMembers[] = {"group",       "name",    "type",       "default",
                                                "minimum",     "maximum", "values",     "unit",
                                                "description", "since",   "deprecated", "identifier"};
constexpr std::string_view kDeprecationMembers[] = {"since", "replacedBy"};
constexpr std::string_view kDurationUnits[] = {"ns", "us", "ms", "s", "min", "h"};

constexpr SettingType kTypes[] = {SettingType::kBool,  SettingType::kInt,     SettingType::kUInt,
                                  SettingType::kInt64, SettingType::kDouble,  SettingType::kString,
                                  SettingType::kEnum,  SettingType::kDuration};

}  // namespace

std::string InQuotes(std::string_view string) {
  std::string quoted;
  AppendString(quoted, string);
  return quoted;
}

std::string Suggestion(std::string_view string, std::span<const std::string_view> names) {
  NearestName nearest(string);
  for (const std::string_view name : names) nearest.Consider(name);
  const std::string found = nearest.Result();
  return found.empty() ? "" : " (did you mean \"" + found + "\"?)";
}

std::string DeclarationsReader::Object::PathOf(std::string_view member) const {
  return path.empty() ? std::string(member) : path + "." + std::string(member);
}

const PlacedValue* DeclarationsReader::Object::Find(std::string_view member) const {
  const auto found = std::ranges::find(value.parts, member, &PlacedValue::name);
  return found == value.parts.end() ? nullptr : &*found;
}

void DeclarationsReader::Read() {
  const PlacedText read = ReadPlaced(m_text);
  if (read.faultReason != nullptr) {
    AddFinding(read.faultPlace, "", read.faultReason);
    return;
  }
  if (!read.document.IsObject()) {
    expect(read.document, "", "an object with \"settings\"");
    return;
  }
  const Object document = open(read.document, "", kDocumentMembers);
  readWords(document, "$schema");
  if (const PlacedValue* const name = document.Find("namespace"); name != nullptr) {
    if (isString(*name, "namespace") && !IsOwnNamespace(name->text)) {
      AddFinding(name->place, "namespace",
                 InQuotes(name->text) + " cannot name a C++ namespace of a component");
    }
    m_nameSpace = name->text;
  }
  const PlacedValue* const settings = require(document, "settings");
  if (settings == nullptr) return;
  if (!settings->IsArray()) {
    expect(*settings, "settings", "an array of declarations");
    return;
  }
  for (std::size_t index = 0; index < settings->parts.size(); ++index) {
    readSetting(settings->parts[index], "settings[" + std::to_string(index) + "]");
  }
}

void DeclarationsReader::AddFinding(const char* at, std::string path, std::string reason) {
  DeclarationFinding& finding = m_findings.emplace_back();
  finding.path = std::move(path);
  finding.reason = std::move(reason);
  finding.offset = static_cast<std::size_t>(at - m_text.data());
}

DeclarationsReader::Object DeclarationsReader::open(const PlacedValue& value, std::string path,
                                                    Names members) {
  Object object{value, std::move(path)};
  for (const PlacedValue& part : value.parts) {
    if (std::ranges::find(members, part.name) == members.end()) {
      AddFinding(part.namePlace, object.path,
                 "unknown member " + InQuotes(part.name) + Suggestion(part.name, members));
    } else if (object.Find(part.name) != &part) {
      AddFinding(part.namePlace, object.path, "\"" + part.name + "\" is repeated");
    }
  }
  return object;
}

const PlacedValue* DeclarationsReader::require(const Object& object, std::string_view member) {
  const PlacedValue* const found = object.Find(member);
  if (found == nullptr) {
    AddFinding(object.value.place, object.path, "\"" + std::string(member) + "\" is missing");
  }
  return found;
}

const PlacedValue* DeclarationsReader::requireString(const Object& object, std::string_view member) {
  const PlacedValue* const found = require(object, member);
  return found != nullptr && isString(*found, object.PathOf(member)) ? found : nullptr;
}

std::string DeclarationsReader::readWords(const Object& object, std::string_view member) {
  const PlacedValue* const words = object.Find(member);
  return words != nullptr && isString(*words, object.PathOf(member)) ? words->text : "";
}

// What reads a setting, a C string or an enum's names for example, may end at a zero byte.
bool DeclarationsReader::isString(const PlacedValue& value, const std::string& path) {
  if (!value.IsString()) {
    expect(value, path, "a string");
    return false;
  }
  if (value.text.find('\0') == std::string::npos) return true;
  AddFinding(value.place, path, "the string has a zero byte");
  return false;
}

void DeclarationsReader::expect(const PlacedValue& value, std::string path, const std::string& expected) {
  AddFinding(value.place, std::move(path), "expected " + expected + ", found " + KindOf(value.place));
}

void DeclarationsReader::readSetting(const PlacedValue& element, std::string path) {
  if (!element.IsObject()) {
    expect(element, std::move(path), "an object with \"group\", \"name\", \"type\" and \"default\"");
    return;
  }
  const std::size_t before = m_findings.size();
  const Object object = open(element, std::move(path), kSettingMembers);
  PlacedDeclaration declaration;
  SettingDeclaration& setting = declaration.setting;
  declaration.path = object.path;
  setting.nameSpace = m_nameSpace;
  readGroup(object, setting);
  readName(object, declaration);
  if (readType(object, setting)) {
    readUnit(object, setting);
    readRange(object, setting);
    readValues(object, setting);
    readDefault(object, setting);
  }
  setting.description = readWords(object, "description");
  setting.since = readWords(object, "since");
  readDeprecation(object, declaration);
  if (m_findings.size() == before) readIdentifier(object, setting);
  if (m_findings.size() == before) m_settings.push_back(std::move(declaration));
}

void DeclarationsReader::readGroup(const Object& object, SettingDeclaration& setting) {
  const PlacedValue* const group = requireString(object, "group");
  if (group == nullptr) return;
  setting.group = GroupName2KalConfigGroup(group->text);
  if (IsConfigGroup(setting.group)) return;
  std::array<std::string, KAL_CONFIG_GROUP_LAST> names;
  std::ranges::transform(GroupsByName(), names.begin(), KalConfigGroup2GroupName);
  const std::vector<std::string_view> known(names.begin(), names.end());
  AddFinding(group->place, object.PathOf("group"),
             "unknown group " + InQuotes(group->text) + Suggestion(group->text, known));
}

void DeclarationsReader::readName(const Object& object, PlacedDeclaration& declaration) {
  const PlacedValue* const name = requireString(object, "name");
  if (name == nullptr) return;
  declaration.setting.name = name->text;
  declaration.place = name->place;
  if (name->text.empty()) AddFinding(name->place, object.PathOf("name"), "the name is empty");
}

bool DeclarationsReader::readType(const Object& object, SettingDeclaration& setting) {
  const PlacedValue* const type = requireString(object, "type");
  if (type == nullptr) return false;
  std::vector<std::string_view> names;
  for (const SettingType known : kTypes) {
    setting.type = known;
    names.emplace_back(SettingTypeName(known));
    if (type->text == names.back()) return true;
  }
  AddFinding(type->place, object.PathOf("type"),
             "unknown type " + InQuotes(type->text) + Suggestion(type->text, names) +
                 ": expected bool, int, uint, int64, double, string, enum or duration");
  return false;
}

void DeclarationsReader::readUnit(const Object& object, SettingDeclaration& setting) {
  setting.unit = readWords(object, "unit");
  if (setting.type != SettingType::kDuration) return;
  const PlacedValue* const unit = require(object, "unit");
  if (unit == nullptr || !unit->IsString()) return;
  if (std::ranges::find(kDurationUnits, unit->text) != std::end(kDurationUnits)) return;
  AddFinding(unit->place, object.PathOf("unit"),
             "unknown unit " + InQuotes(unit->text) + " of a duration: expected ns, us, ms, s, min or h");
}

void DeclarationsReader::readRange(const Object& object, SettingDeclaration& setting) {
  for (const auto& [member, bound] :
       {std::pair("minimum", &setting.minimum), std::pair("maximum", &setting.maximum)}) {
    const PlacedValue* const value = object.Find(member);
    if (value == nullptr) continue;
    if (HasRange(setting.type)) {
      *bound = readOfType(*value, object.PathOf(member), setting.type);
    } else {
      AddFinding(value->namePlace, object.PathOf(member),
                 std::string("the type ") + SettingTypeName(setting.type) + " has no range");
    }
  }
  if (!setting.minimum.IsValid() || !setting.maximum.IsValid()) return;
  if (!IsLess(setting.type, setting.maximum, setting.minimum)) return;
  AddFinding(
      object.Find("minimum")->place, object.PathOf("minimum"),
      "the minimum " + setting.minimum.ToString() + " is above the maximum " + setting.maximum.ToString());
  setting.minimum = setting.maximum = ConfigData();
}

void DeclarationsReader::readValues(const Object& object, SettingDeclaration& setting) {
  const bool isEnum = setting.type == SettingType::kEnum;
  const PlacedValue* const list = isEnum ? require(object, "values") : object.Find("values");
  if (list == nullptr) return;
  const std::string path = object.PathOf("values");
  if (setting.type == SettingType::kBool) {
    AddFinding(list->namePlace, path, "the type bool has no other values than true and false");
    return;
  }
  if (!list->IsArray() || list->parts.empty()) {
    AddFinding(list->place, path, "expected an array of one value or more");
    return;
  }
  std::vector<std::string> values;
  for (std::size_t index = 0; index < list->parts.size(); ++index) {
    const PlacedValue& part = list->parts[index];
    const std::string partPath = path + "[" + std::to_string(index) + "]";
    const ConfigData value =
        isEnum ? readOfType(part, partPath, setting.type) : readValue(part, partPath, setting);
    if (!value.IsValid()) continue;
    if (std::ranges::find(values, value.ToString()) != values.end()) {
      AddFinding(part.place, partPath, "the value is repeated");
      continue;
    }
    values.push_back(value.ToString());
    if (!isEnum) continue;
    const std::string enumerator = CamelCase(value.ToString());
    if (enumerator.empty()) {
      AddFinding(part.place, partPath, InQuotes(value.ToString()) + " gives no C++ enumerator a name");
    } else if (std::ranges::find(setting.enumerators, enumerator) != setting.enumerators.end()) {
      AddFinding(part.place, partPath,
                 "another value gives its C++ enumerator the same name, k" + enumerator);
    }
    setting.enumerators.push_back(enumerator);
  }
  setting.values = std::move(values);
}

void DeclarationsReader::readDefault(const Object& object, SettingDeclaration& setting) {
  const PlacedValue* const value = require(object, "default");
  if (value != nullptr) setting.defaultValue = readValue(*value, object.PathOf("default"), setting);
}

void DeclarationsReader::readIdentifier(const Object& object, SettingDeclaration& setting) {
  const PlacedValue* const given = object.Find("identifier");
  if (given == nullptr) {
    const std::string name = CamelCase(setting.name);
    setting.identifier = KalConfigGroup2GroupName(setting.group) + name;
    if (!name.empty()) return;
    AddFinding(object.Find("name")->place, object.PathOf("name"),
               InQuotes(setting.name) + " gives no C++ constant a name: give it one as \"identifier\"");
  } else if (isString(*given, object.PathOf("identifier"))) {
    setting.identifier = given->text;
    if (!IsTypeName(given->text)) {
      AddFinding(given->place, object.PathOf("identifier"),
                 InQuotes(given->text) + " is no C++ identifier that begins with a capital letter");
    } else if (setting.type == SettingType::kEnum && IsLikeAMacro(given->text)) {
      AddFinding(given->place, object.PathOf("identifier"),
                 InQuotes(given->text) + " may be a macro: the name of an enum has a lower-case letter");
    }
  }
}

void DeclarationsReader::readDeprecation(const Object& object, PlacedDeclaration& declaration) {
  const PlacedValue* const value = object.Find("deprecated");
  if (value == nullptr) return;
  std::string path = object.PathOf("deprecated");
  if (!value->IsObject()) {
    expect(*value, std::move(path), "an object with \"since\" and \"replacedBy\"");
    return;
  }
  const Object deprecated = open(*value, std::move(path), kDeprecationMembers);
  declaration.setting.deprecated = {readWords(deprecated, "since"), readWords(deprecated, "replacedBy")};
  const PlacedValue* const replacedBy = deprecated.Find("replacedBy");
  if (replacedBy != nullptr) declaration.replacedBy = replacedBy->place;
}

ConfigData DeclarationsReader::readValue(const PlacedValue& value, const std::string& path,
                                         const SettingDeclaration& setting) {
  ConfigData read = readOfType(value, path, setting.type);
  const bool areValuesWrong = setting.type == SettingType::kEnum && setting.values.empty();
  if (!read.IsValid() || areValuesWrong) return {};
  switch (FaultOf(setting, read)) {
    case ValueFault::kOutOfRange:
      AddFinding(value.place, path, read.ToString() + " is out of range: " + ExpectedRange(setting));
      return {};
    case ValueFault::kNotAllowed:
      AddFinding(value.place, path, InQuotes(read.ToString()) + " is not among the values");
      return {};
    default:
      return read;
  }
}

ConfigData DeclarationsReader::readOfType(const PlacedValue& value, const std::string& path,
                                          SettingType type) {
  if (type == SettingType::kBool) {
    if (value.IsTrue() || value.IsFalse()) return value.IsTrue();
  } else if (!HasRange(type)) {
    return isString(value, path) ? ConfigData(value.text) : ConfigData();
  } else if (value.IsNumber()) {
    SettingDeclaration unlimited;
    unlimited.type = type;
    const ConfigData read(value.text);
    if (FaultOf(unlimited, read) == ValueFault::kNone) {
      return type == SettingType::kDouble ? ConfigData(read.ToDouble())
                                          : ConfigData(*ReadAs<std::int64_t>(read));
    }
    AddFinding(value.place, path, "expected " + ExpectedType(type));
    return {};
  }
  expect(value, path, ExpectedType(type));
  return {};
}

}  // namespace kalStore::internal
