// SPDX-License-Identifier: Apache-2.0
#include "NamesList.h"

#include "CommandError.h"
#include "ConfigPath.h"
#include "Printable.h"
#include "TextFile.h"
#include "tessel/json.h"

namespace {

// The name that an element of a list gives; null when it is neither a name nor an entry with one.
const std::string* NameOf(const json::Value& element) {
  if (element.GetType() == json::StringVal) return &element.ToString();
  if (element.GetType() != json::ObjectVal || !element.HasKey("key")) return nullptr;
  const json::Value& key = element["key"];
  return key.GetType() == json::StringVal ? &key.ToString() : nullptr;
}

}  // namespace

void ReadNamesList(const std::string& file, kalStore::SettingsNames& names) {
  const auto refuse = [&](const std::string& reason) {
    return CommandError(FileTitle(file) + ": " + reason);
  };
  const std::string text = ReadFile(file);
  json::ParseError error;
  const json::Value list = json::Deserialize(text, error);
  if (error.reason != nullptr && !ForeignFormat(text).empty()) throw refuse(ForeignFormat(text));
  if (error.reason != nullptr) {
    throw CommandError(FileTitle(file) + ":" + std::to_string(error.line) + ":" +
                       std::to_string(error.column) + ": " + error.reason);
  }
  if (list.GetType() != json::ObjectVal) throw refuse("a list of names is an object of groups");
  for (const auto& [groupName, elements] : list.ToObject()) {
    const kalStore::KalConfigGroup group = kalStore::GroupName2KalConfigGroup(groupName);
    if (!kalStore::IsConfigGroup(group)) throw refuse(UnknownGroup(groupName));
    if (elements.GetType() != json::ArrayVal) throw refuse(groupName + " is no array of names");
    std::vector<std::string>& known = names[group];
    for (const json::Value& element : elements.ToArray()) {
      const std::string* const name = NameOf(element);
      if (name == nullptr) throw refuse(groupName + " has an element that is no name");
      known.push_back(*name);
    }
  }
}
