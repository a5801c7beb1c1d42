// SPDX-License-Identifier: Apache-2.0
#include "declare/Words.h"

#include <cstddef>

namespace declare {

std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t end = text.find(' ');
    if (end != 0) words.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return words;
}

std::string Joined(const std::vector<std::string>& texts, std::string_view separator) {
  std::string joined;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) joined += separator;
    joined += text;
  }
  return joined;
}

std::string Range(const kalStore::SettingDeclaration& setting) {
  const std::string& minimum = setting.minimum.ToString();
  const std::string& maximum = setting.maximum.ToString();
  if (setting.minimum.IsValid() && setting.maximum.IsValid()) return minimum + " to " + maximum;
  if (setting.minimum.IsValid()) return minimum + " or more";
  return setting.maximum.IsValid() ? maximum + " or less" : "";
}

std::string Default(const kalStore::SettingDeclaration& setting) {
  const ConfigData& value = setting.defaultValue;
  if (setting.type != kalStore::SettingType::kBool || !value.IsValid()) return value.ToString();
  return value ? "true" : "false";
}

std::string Deprecation(const kalStore::SettingDeprecation& deprecation) {
  std::string text = "deprecated";
  if (!deprecation.since.empty()) text += " since " + deprecation.since;
  if (!deprecation.replacedBy.empty()) text += ": use " + deprecation.replacedBy;
  return text;
}

}  // namespace declare
