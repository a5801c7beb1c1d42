// SPDX-License-Identifier: Apache-2.0
#include "ChangeReport.h"

ChangeReport::ChangeReport(kalStore::IKalConfig& store, const std::vector<SettingsEntry>& entries)
    : m_store(store) {
  m_before.reserve(entries.size());
  for (const SettingsEntry& entry : entries) {
    if (!entry.stays) continue;
    Before& before = m_before.emplace_back(Before{&entry, {}});
    m_store.GetKalConfig(entry.group, entry.name.c_str(), before.value);
  }
}

std::vector<Change> ChangeReport::Changes() {
  std::vector<Change> changes;
  ConfigData after;
  for (const auto& [entry, before] : m_before) {
    m_store.GetKalConfig(entry->group, entry->name.c_str(), after);
    if (after != before) changes.push_back({entry->group, entry->name, before, after});
  }
  return changes;
}
