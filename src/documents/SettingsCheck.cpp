// SPDX-License-Identifier: Apache-2.0
#include "tessel/settings_check.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "documents/GroupOrder.h"
#include "documents/NameIndex.h"
#include "documents/SettingsReader.h"
#include "json/TextPlace.h"
#include "store/FeatureToggleKeys.h"

namespace kalStore {

using namespace internal;

namespace {

void Suggest(SettingsFinding& finding, std::string nearest) {
  if (nearest.empty()) return;
  finding.reason += " (did you mean \"" + nearest + "\"?)";
  finding.nearest = std::move(nearest);
}

// What is to be said of the names in a document that import accepts.
class NameCheck {
 public:
  // `entries` takes what import sets, and may be null.
  NameCheck(std::string_view text, const SettingsNames& known, std::vector<SettingsEntry>* entries)
      : m_text(text), m_known(known), m_entries(entries) {}

  void CheckGroupNames(std::vector<SettingsFinding>& findings) {
    NameIndex groups;
    std::vector<std::string> names;
    for (const KalConfigGroup group : GroupsByName()) names.push_back(KalConfigGroup2GroupName(group));
    for (const std::string& name : names) groups.Add(name);
    for (SettingsFinding& finding : findings) {
      if (finding.problem == SettingsProblem::kUnknownGroup) Suggest(finding, groups.Nearest(finding.name));
    }
  }

  void CheckEntries(KalConfigGroup id, SettingsGroup& group) {
    const std::size_t size = group.entries.size();
    const bool isToggles = id == KAL_CONFIG_GROUP_FEATURE;
    const bool areNamesKnown = isToggles || m_known.contains(id);
    NameIndex index = knownNames(id);
    // Where each name comes last: among the group's entries, and among m_entries.
    std::unordered_map<std::string_view, std::pair<std::size_t, std::size_t>> places;
    places.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
      const auto [cName, value] = group.entries[i];
      const std::string_view name(cName);
      if (name.empty()) {
        add(group, SettingsProblem::kEmptyName, id, i, "the name is empty");
        continue;
      }
      if (areNamesKnown && !index.Has(name)) {
        add(group, isToggles ? SettingsProblem::kUnknownToggle : SettingsProblem::kUnknownName, id, i,
            isToggles ? "no feature toggle has this name" : "unknown name", name);
        Suggest(group.findings.back(), index.Nearest(name));
      }
      const std::size_t imported = m_entries == nullptr ? 0 : m_entries->size();
      if (m_entries != nullptr) m_entries->push_back({id, std::string(name), std::string(value), true});

      const auto [found, isNew] = places.try_emplace(name, i, imported);
      if (isNew) continue;
      const auto [earlier, earlierImported] = std::exchange(found->second, {i, imported});
      if (m_entries != nullptr) (*m_entries)[earlierImported].stays = false;
      add(group, SettingsProblem::kRepeatedName, id, earlier,
          "the name is repeated in " + ElementPath(id, group.origins[i].element) + "; the last value stays",
          name);
    }
  }

 private:
  NameIndex knownNames(KalConfigGroup group) const {
    NameIndex index;
    if (const auto known = m_known.find(group); known != m_known.end()) {
      for (const std::string& name : known->second) index.Add(name);
    }
    if (group != KAL_CONFIG_GROUP_FEATURE) return index;
    for (std::int32_t id = 0; id < KAL_FT_Unknow; ++id) {
      index.Add(FeatureToggleKey(static_cast<KalFeatureToggleID>(id)));
    }
    return index;
  }

  void add(SettingsGroup& group, SettingsProblem problem, KalConfigGroup id, std::size_t entry,
           std::string reason, std::string_view name = {}) {
    const SettingsGroup::Origin& origin = group.origins[entry];
    SettingsFinding& finding = group.findings.emplace_back();
    finding.problem = problem;
    finding.path = ElementPath(id, origin.element) + ".key";
    finding.name = name;
    finding.reason = std::move(reason);
    finding.offset = static_cast<std::size_t>(origin.name - m_text.data());
  }

  const std::string_view m_text;
  const SettingsNames& m_known;
  std::vector<SettingsEntry>* const m_entries;
};

// Puts the findings in the order of the text, and gives each its line and column.
void Place(std::string_view text, std::vector<SettingsFinding>& findings) {
  std::ranges::stable_sort(findings, {}, &SettingsFinding::offset);
  TextPlace place;
  std::size_t passed = 0;
  for (SettingsFinding& finding : findings) {
    place.Advance(text.substr(passed, finding.offset - passed));
    passed = finding.offset;
    finding.line = place.line;
    finding.column = place.column;
  }
}

std::vector<SettingsFinding> Check(std::string_view text, const SettingsNames& known,
                                   std::vector<SettingsEntry>* entries) {
  SettingsReader reader(text, SettingsReader::Findings::kAll);
  std::vector<SettingsFinding> findings;
  if (reader.Read()) {
    NameCheck names(text, known, entries);
    findings = std::move(reader.DocumentFindings());
    names.CheckGroupNames(findings);
    for (const KalConfigGroup id : GroupsByName()) {
      SettingsGroup& group = reader.Group(id);
      names.CheckEntries(id, group);
      std::ranges::move(group.findings, std::back_inserter(findings));
    }
  } else {
    findings.push_back(reader.Refusal());
  }
  Place(text, findings);
  return findings;
}

}  // namespace

std::vector<SettingsFinding> CheckSettings(const std::string& text) {
  return Check(text, {}, nullptr);
}

std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known) {
  return Check(text, known, nullptr);
}

SettingsContents ReadSettings(const std::string& text) {
  SettingsContents contents;
  contents.findings = Check(text, {}, &contents.entries);
  return contents;
}

}  // namespace kalStore
