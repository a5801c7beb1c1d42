// SPDX-License-Identifier: Apache-2.0
#include "inspect/LastChanges.h"
#include "inspect/StoreParts.h"
#include "tessel/inspect.h"

namespace kalStore {

using namespace internal;

std::vector<InspectedSetting> InspectSettings(std::uint32_t callId) {
  std::vector<InspectedSetting> settings;
  CopyNumbers numbers{};
  CopyGroups<KalConfigGroup>(
      callId,
      [&](auto& copy, KalConfig& store, KalConfigGroup group) {
        StoreParts::Values::Locked values(StoreParts::ValuesOf(store, group));
        numbers[static_cast<std::size_t>(group)] = NextJournalNumber();
        for (const auto& [name, value] : *values) copy.Put(group, name, value.ToString());
      },
      [&](KalConfigGroup group, std::string_view name, std::string_view value) {
        settings.push_back({group, std::string(name), std::string(value), std::nullopt});
      });
  FindLastChanges(callId, numbers, settings);
  return settings;
}

}  // namespace kalStore
