// SPDX-License-Identifier: Apache-2.0
#include <string_view>
#include <utility>

#include "documents/Identifier.h"
#include "tessel/KalFeatureToggleID.h"
#include "tessel/settings_declaration.h"

namespace kalStore {
namespace {

SettingType TypeOf(std::string_view kind) {
  if (kind == "bool") return SettingType::kBool;
  if (kind == "int") return SettingType::kInt;
  return kind == "double" ? SettingType::kDouble : SettingType::kString;
}

SettingDeclaration Toggle(std::string_view enumerator, const char* key, std::string_view kind,
                          const char* meaning) {
  SettingDeclaration toggle;
  toggle.group = KAL_CONFIG_GROUP_FEATURE;
  toggle.name = key;
  toggle.type = TypeOf(kind);
  toggle.description = meaning;
  toggle.nameSpace = "settings";
  toggle.identifier = "Feature";
  toggle.identifier += enumerator;
  return toggle;
}

}  // namespace

std::vector<SettingDeclaration> FeatureToggleDeclarations() {
  std::vector<SettingDeclaration> toggles;
#define KAL_FT(id, name, key, kind, meaning) toggles.push_back(Toggle(#name, key, #kind, meaning));
#define KAL_FT_RANGE(name, least, most)     \
  toggles[KAL_FT_##name].minimum = (least); \
  toggles[KAL_FT_##name].maximum = (most);
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
  toggles.pop_back();  // The end mark.
  return toggles;
}

}  // namespace kalStore
