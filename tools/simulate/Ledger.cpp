// SPDX-License-Identifier: Apache-2.0
#include "simulate/Ledger.h"

namespace simulate {

Subscriber& Ledger::Add(const SettingKey& key, Way way) {
  const kalStore::detail::Lock lock(m_mutex);
  return m_settings[key].subscribers.emplace_back(m_recorder, way);
}

std::uint64_t Ledger::Announce(const SettingKey& key, const ConfigData& value) {
  const kalStore::detail::Lock lock(m_mutex);
  ++m_lastSet;
  for (Subscriber& subscriber : m_settings[key].subscribers) subscriber.Expect(m_lastSet, value);
  return m_lastSet;
}

void Ledger::Keep(const SettingKey& key) {
  const kalStore::detail::Lock lock(m_mutex);
  Setting& setting = m_settings[key];
  if (setting.subscribers.empty()) {
    ++m_recorder.setsWithoutSubscribers;
  } else {
    ++m_recorder.setsNotified;
    ++setting.notifiedChanges;
  }
}

void Ledger::Withdraw(const SettingKey& key, std::uint64_t set) {
  ++m_recorder.setsUnchanged;
  const kalStore::detail::Lock lock(m_mutex);
  for (Subscriber& subscriber : m_settings[key].subscribers) subscriber.Withdraw(set);
}

std::size_t Ledger::Missing() const {
  const kalStore::detail::Lock lock(m_mutex);
  std::size_t missing = 0;
  for (const auto& [key, setting] : m_settings) {
    for (const Subscriber& subscriber : setting.subscribers) missing += subscriber.Missing();
  }
  return missing;
}

}  // namespace simulate
