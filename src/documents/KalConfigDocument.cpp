#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include "json/Reader.h"
#include "json/Writer.h"
#include "tessel/KalConfig.h"
#include "tessel/json.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// The text of an entry's member; null when the entry has no such text.
std::string* TextMember(json::Value& entry, const char* key) {
  json::Object& members = entry.ToObject();
  const auto found = members.find(key);
  if (found == members.end() || found->second.GetType() != json::StringVal) return nullptr;
  return &found->second.ToString();
}

// The order of a document's members.
const std::array<KalConfigGroup, KAL_CONFIG_GROUP_LAST>& GroupsByName() {
  static const auto groups = [] {
    std::array<KalConfigGroup, KAL_CONFIG_GROUP_LAST> all{};
    for (int group = 0; group < KAL_CONFIG_GROUP_LAST; ++group) {
      all[static_cast<std::size_t>(group)] = static_cast<KalConfigGroup>(group);
    }
    std::ranges::sort(all, {}, KalConfigGroup2GroupName);
    return all;
  }();
  return groups;
}

}  // namespace

std::int32_t KalConfig::ApplyKalConfigs(const char* szJsonConfig) {
  if (szJsonConfig == nullptr) return kResultNotFound;
  TESSEL_TRACE(2, "kalStore::KalConfig::ApplyKalConfigs",
               Cid{m_callId} << "szJsonConfig=" << szJsonConfig << This{this});

  json::Value document = json::ParseDocument(szJsonConfig, nullptr);
  if (document.GetType() != json::ObjectVal) return kResultNotFound;
  for (auto& [groupName, entries] : document.ToObject()) {
    const KalConfigGroup group = GroupName2KalConfigGroup(groupName);
    if (!IsConfigGroup(group) || entries.GetType() != json::ArrayVal) continue;
    for (json::Value& entry : entries.ToArray()) {
      if (entry.GetType() != json::ObjectVal) continue;
      const std::string* key = TextMember(entry, "key");
      std::string* value = TextMember(entry, "value");
      if (key == nullptr || value == nullptr) continue;
      SetKalConfig(group, key->c_str(), ConfigData(std::move(*value)), false, false);
    }
  }
  return kResultOk;
}

// Written straight from the maps: a document in memory would be many times the text. The groups are read from 0
// upward, whatever order they are written in: a reader of the text that finds what a writer set in a group
// also finds what the writer set in a later group before.
const char* KalConfig::DumpKalConfigs(ConfigMultGroup_t groups) {
  TESSEL_TRACE(2, "kalStore::KalConfig::DumpKalConfigs",
               ", groups=" << groups << Cid{m_callId} << This{this});
  std::array<std::string, KAL_CONFIG_GROUP_LAST> arrays;
  for (std::size_t group = 0; group < arrays.size(); ++group) {
    if ((groups >> group & 1) == 0) continue;
    std::string& array = arrays[group];
    array = "[";
    const char* separator = "";
    ConfigMap::Locked values(m_configs[group]);
    for (const auto& [name, value] : *values) {
      array += std::exchange(separator, ",");
      array += R"({"key":)";
      json::AppendString(array, name);
      array += R"(,"value":)";
      json::AppendString(array, value.ToCstr());
      array += '}';
    }
    array += ']';
  }

  std::string text = "{";
  for (const KalConfigGroup group : GroupsByName()) {
    std::string& array = arrays[static_cast<std::size_t>(group)];
    if (array.empty()) continue;
    if (text.size() > 1) text += ',';
    json::AppendString(text, KalConfigGroup2GroupName(group));
    text += ':';
    text += std::exchange(array, {});
  }
  text += '}';
  std::lock_guard lock(m_dumpLock);
  m_dumpText = std::move(text);
  return m_dumpText.c_str();
}

}  // namespace kalStore
