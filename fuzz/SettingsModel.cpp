// SPDX-License-Identifier: Apache-2.0
#include "SettingsModel.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "tessel/json.h"

namespace fuzz {

const std::array<std::string, kGroups> kGroupNames = {
    "Common",      "Feature",   "Metrics", "Audio",        "AudioSlide", "Video",   "VideoSlide",
    "Application", "Gamestate", "AudioSi", "Transmission", "TAOnly",     "UnitTest"};

namespace {

void AppendQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text.substr(0, text.find('\0'))) {
    constexpr std::string_view kEscaped = "\"\\\b\f\n\r\t";
    constexpr const char kLetters[] = "\"\\bfnrt";
    if (const std::size_t at = kEscaped.find(c); at != std::string_view::npos) {
      out += {'\\', kLetters[at]};
    } else if (static_cast<unsigned char>(c) < 0x20) {
      out += {'\\', 'u', '0', '0', c < 0x10 ? '0' : '1', "0123456789abcdef"[c % 16]};
    } else {
      out += c;
    }
  }
  out += '"';
}

// The groups as a document begins them, in its order, which is that of their names.
const auto kBeginningsOfGroups = [] {
  std::map<std::string, std::uint32_t> groups;
  for (std::uint32_t group = 0; group < kGroups; ++group) groups.emplace(kGroupNames[group], group);
  std::vector<std::pair<std::string, std::uint32_t>> beginnings;
  for (const auto& [name, group] : groups) beginnings.emplace_back('"' + name + "\":[", group);
  return beginnings;
}();

std::optional<std::string> TextOf(const json::Value& entry, const char* key) {
  if (entry.GetType() != json::ObjectVal || !entry.HasKey(key)) return std::nullopt;
  if (entry[key].GetType() != json::StringVal) return std::nullopt;
  return entry[key].ToString();
}

}  // namespace

std::optional<std::vector<SettingsEntry>> EntriesOf(const std::string& document) {
  const json::Value value = json::Deserialize(document);
  if (value.GetType() != json::ObjectVal) return std::nullopt;
  std::vector<SettingsEntry> entries;
  for (const auto& [groupName, list] : value.ToObject()) {
    const auto group = std::find(kGroupNames.begin(), kGroupNames.end(), groupName);
    if (group == kGroupNames.end() || list.GetType() != json::ArrayVal) continue;
    for (const json::Value& element : list.ToArray()) {
      const auto name = TextOf(element, "key");
      const auto text = TextOf(element, "value");
      if (!name || !text) continue;
      // A store takes names as C strings, and none that is empty.
      const std::string cut = name->c_str();
      if (!cut.empty())
        entries.push_back({static_cast<std::uint32_t>(group - kGroupNames.begin()), cut, *text});
    }
  }
  return entries;
}

std::string DocumentOf(const SettingsValues& values, std::uint32_t mask) {
  std::string document = "{";
  for (const auto& [beginning, group] : kBeginningsOfGroups) {
    if ((mask >> group & 1) == 0) continue;
    if (document.size() > 1) document += ',';
    document += beginning;
    for (const auto& [name, value] : values[group]) {
      if (document.back() == '}') document += ',';
      document += "{\"key\":";
      AppendQuoted(document, name);
      document += ",\"value\":";
      AppendQuoted(document, value);
      document += '}';
    }
    document += ']';
  }
  return document + '}';
}

}  // namespace fuzz
