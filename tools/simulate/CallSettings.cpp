// SPDX-License-Identifier: Apache-2.0
#include "simulate/CallSettings.h"

#include <map>

#include "tessel/KalConfigRegistry.h"
#include "tessel/ResultCode.h"

namespace simulate {

void CallSettings::Bind(const kalStore::ConfigKey<double>& key, std::function<double()> compute) {
  m_facade.BindConfig(
      key.Name(), [compute = std::move(compute)](const kalStore::KalConfigEvent&) { return compute(); },
      key.Group());
}

void CallSettings::Join(std::uint32_t callId) {
  ConfigData value;
  for (const auto& [key, subscriber] : m_subscriptions) {
    if (kalStore::GetKalConfigValueEx(key.first, key.second.c_str(), value, callId) == kalStore::kResultOk) {
      subscriber.Expect(Subscriber::kInitial, value);
    }
  }
  m_facade.SetCallId(callId);
}

double CallSettings::ReadComputed(const kalStore::ConfigKey<double>& key) {
  ++m_recorder.reads;
  return m_facade.GetDynamicConfig(key.Name(), key.Group()).ToDouble(key.Default());
}

// What the import changes is known beforehand: an entry whose value is not the one in the store.
void CallSettings::Apply(const SettingsDocument& document) {
  const kalStore::detail::Lock lock(m_ledger.sets);
  std::map<SettingKey, ConfigData> current;
  std::vector<const SettingKey*> changed;
  for (const SettingsEntry& entry : document.Entries()) {
    const auto [found, isFirst] = current.try_emplace({entry.group, entry.name});
    auto& [key, value] = *found;
    if (isFirst) m_facade.GetKalConfig(entry.name.c_str(), value, entry.group);
    ConfigData next(entry.value);
    if (next == value) {
      ++m_recorder.setsUnchanged;
      continue;
    }
    m_ledger.Announce(key, next);
    changed.push_back(&key);
    value = std::move(next);
  }
  const kalStore::JournalDocument name(document.Name().c_str());
  m_facade.ApplyKalConfigs(document.Text().c_str());
  for (const SettingKey* key : changed) m_ledger.Keep(*key);
}

void CallSettings::subscribe(SettingKey key, Way way, std::function<void(const ConfigData&)> react) {
  Subscriber& subscriber = m_ledger.Add(key, way);
  m_facade.SubscribeConfig(
      key.second.c_str(),
      [&subscriber, react = std::move(react)](const kalStore::KalConfigEvent& event) {
        subscriber.Arrive(event.m_newValue);
        react(event.m_newValue);
      },
      key.first, way == Way::kDirect ? nullptr : m_thread, way == Way::kPosted);
  m_subscriptions.push_back({std::move(key), subscriber});
}

void CallSettings::set(const SettingKey& key, ConfigData value) {
  const kalStore::detail::Lock lock(m_ledger.sets);
  const std::uint64_t set = m_ledger.Announce(key, value);
  const std::int32_t result = m_facade.SetKalConfig(key.second.c_str(), std::move(value), key.first);
  if (result == kalStore::kResultUnchanged) {
    m_ledger.Withdraw(key, set);
  } else {
    m_ledger.Keep(key);
  }
}

}  // namespace simulate
