#include <mutex>
#include <utility>

#include "Reader.h"
#include "TraceLine.h"
#include "tessel/KalConfig.h"
#include "tessel/json.h"

namespace kalStore {
namespace {

// The text of an entry's member; null when the entry has no such text.
std::string* TextMember(json::Value& entry, const char* key) {
  json::Object& members = entry.ToObject();
  const auto found = members.find(key);
  if (found == members.end() || found->second.GetType() != json::StringVal) return nullptr;
  return &found->second.ToString();
}

}  // namespace

std::int32_t KalConfig::ApplyKalConfigs(const char* szJsonConfig) {
  if (szJsonConfig == nullptr) return kResultNotFound;
  TESSEL_TRACE(2, Cid{m_callId} << "szJsonConfig=" << szJsonConfig << This{this});

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

const char* KalConfig::DumpKalConfigs(ConfigMultGroup_t groups) {
  TESSEL_TRACE(2, ", groups=" << groups << Cid{m_callId} << This{this});
  json::Object document;
  for (std::uint32_t g = 0; g < KAL_CONFIG_GROUP_LAST && groups >> g != 0; ++g) {
    if ((groups >> g & 1) == 0) continue;
    json::Array entries;
    {
      ConfigMap::Locked values(m_configs[g]);
      entries.reserve(values->size());
      for (const auto& [name, value] : *values) {
        json::Object entry;
        entry.emplace("key", name);
        entry.emplace("value", value.ToCstr());
        entries.push_back(std::move(entry));
      }
    }
    document.emplace(KalConfigGroup2GroupName(static_cast<KalConfigGroup>(g)), std::move(entries));
  }
  std::string text = json::Serialize(json::Value(std::move(document)));
  std::lock_guard lock(m_dumpLock);
  m_dumpText = std::move(text);
  return m_dumpText.c_str();
}

}  // namespace kalStore
