// SPDX-License-Identifier: Apache-2.0
#include "DocumentDifference.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "ConfigPath.h"
#include "tessel/CallStore.h"

namespace {

// As import does; what the store answers.
std::int32_t Set(kalStore::IKalConfig& store, const SettingsEntry& entry) {
  return store.SetKalConfig(entry.group, entry.name.c_str(), ConfigData(entry.value), false, false);
}

ConfigData Valued(const SettingsEntry& entry) {
  return ConfigData(entry.value);
}

}  // namespace

std::vector<Change> ChangesInStore(const SettingsDocument& first, const SettingsDocument& second) {
  const kalStore::CallStore store(1, kalStore::CallStore::kEndsCall);
  for (const SettingsEntry& entry : first.Entries()) Set(*store, entry);
  std::vector<Change> changes;
  Change change;
  for (const SettingsEntry& entry : second.Entries()) {
    if (!entry.stays) continue;  // A value that a later entry replaces is no difference.
    const char* const name = entry.name.c_str();
    store->GetKalConfig(entry.group, name, change.before);
    if (Set(*store, entry) == kalStore::kResultUnchanged) continue;
    store->GetKalConfig(entry.group, name, change.after);
    change.group = entry.group;
    change.name = entry.name;
    changes.push_back(change);
  }
  return changes;
}

std::vector<Change> ExactChanges(const SettingsDocument& first, const SettingsDocument& second) {
  const std::vector<SettingsEntry>& old = first.Entries();
  std::array<std::unordered_map<std::string_view, std::size_t>, kalStore::KAL_CONFIG_GROUP_LAST> indexes;
  for (std::size_t index = 0; index < old.size(); ++index) {
    indexes[static_cast<std::size_t>(old[index].group)][old[index].name] = index;
  }
  std::vector<bool> isKept(old.size());
  std::vector<Change> changes;
  for (const SettingsEntry& entry : second.Entries()) {
    if (!entry.stays) continue;
    const auto& group = indexes[static_cast<std::size_t>(entry.group)];
    const auto found = group.find(entry.name);
    if (found == group.end()) {
      changes.push_back({entry.group, entry.name, ConfigData(), Valued(entry)});
      continue;
    }
    isKept[found->second] = true;
    const SettingsEntry& before = old[found->second];
    if (before.value != entry.value)
      changes.push_back({entry.group, entry.name, Valued(before), Valued(entry)});
  }
  for (std::size_t index = 0; index < old.size(); ++index) {
    const SettingsEntry& entry = old[index];
    if (entry.stays && !isKept[index])
      changes.push_back({entry.group, entry.name, Valued(entry), ConfigData()});
  }
  std::ranges::stable_sort(
      changes, {}, [](const Change& change) -> const std::string& { return GroupName(change.group); });
  return changes;
}
