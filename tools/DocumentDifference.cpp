#include "DocumentDifference.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_map>

#include "ChangeReport.h"
#include "ConfigPath.h"
#include "tessel/CallStore.h"

namespace {

using kalStore::IKalConfig;

// As import does.
void SetAll(IKalConfig& store, const SettingsDocument& document) {
  for (const SettingsEntry& entry : document.Entries()) {
    store.SetKalConfig(entry.group, entry.name.c_str(), ConfigData(entry.value), false, false);
  }
}

ConfigData Valued(const SettingsEntry& entry) {
  return ConfigData(entry.value);
}

}  // namespace

std::vector<Change> ChangesInStore(const SettingsDocument& first, const SettingsDocument& second) {
  const kalStore::CallStore store(1, kalStore::CallStore::kEndsCall);
  SetAll(*store, first);
  ChangeReport report(*store, second.Entries());
  SetAll(*store, second);
  return report.Changes();
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
  std::ranges::stable_sort(changes, {}, [](const Change& change) { return GroupName(change.group); });
  return changes;
}
