// SPDX-License-Identifier: Apache-2.0
#include "tessel/settings_check.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "documents/FindingOrder.h"
#include "documents/GroupOrder.h"
#include "documents/NameIndex.h"
#include "documents/SettingValue.h"
#include "documents/SettingsReader.h"

namespace kalStore {

using namespace internal;

namespace {

void Suggest(SettingsFinding& finding, std::string nearest) {
  if (nearest.empty()) return;
  finding.reason += " (did you mean \"" + nearest + "\"?)";
  finding.nearest = std::move(nearest);
}

// What the caller says that a document may set.
struct Expected {
  const SettingsNames& names;
  const std::vector<SettingDeclaration>& declared;
};

// What is to be said of names and values in a document that import accepts.
class EntryCheck {
 public:
  // `entries` takes what import sets, and may be null.
  EntryCheck(std::string_view text, const Expected& expected, std::vector<SettingsEntry>* entries)
      : m_text(text), m_expected(expected), m_entries(entries) {}

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
    const Declarations declared = declarationsOf(id);
    const bool areNamesKnown = !declared.empty() || m_expected.names.contains(id);
    NameIndex index = knownNames(id);
    // Where each name comes last: among the group's entries, and among m_entries.
    std::unordered_map<std::string_view, std::pair<std::size_t, std::size_t>> places;
    places.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
      const EntryList::Entry entry = group.entries[i];
      const std::string_view name(entry.name);
      if (name.empty()) {
        addToName(group, SettingsProblem::kEmptyName, id, i, "the name is empty");
        continue;
      }
      if (areNamesKnown && !index.Has(name)) {
        addToName(group, isToggles ? SettingsProblem::kUnknownToggle : SettingsProblem::kUnknownName, id, i,
                  isToggles ? "no feature toggle has this name" : "unknown name", name);
        Suggest(group.findings.back(), index.Nearest(name));
      }
      if (const auto found = declared.find(name); found != declared.end()) {
        checkDeclared(group, id, i, *found->second);
      }
      const std::size_t imported = m_entries == nullptr ? 0 : m_entries->size();
      if (m_entries != nullptr) m_entries->push_back({id, std::string(name), std::string(entry.value), true});

      const auto [found, isNew] = places.try_emplace(name, i, imported);
      if (isNew) continue;
      const auto [earlier, earlierImported] = std::exchange(found->second, {i, imported});
      if (m_entries != nullptr) (*m_entries)[earlierImported].stays = false;
      addToName(
          group, SettingsProblem::kRepeatedName, id, earlier,
          "the name is repeated in " + ElementPath(id, group.origins[i].element) + "; the last value stays",
          name);
    }
  }

 private:
  using Declarations = std::unordered_map<std::string_view, const SettingDeclaration*>;

  // The caller's declaration of a toggle holds, not the catalogue's.
  Declarations declarationsOf(KalConfigGroup group) {
    Declarations declared;
    for (const SettingDeclaration& setting : m_expected.declared) {
      if (setting.group == group) declared.try_emplace(setting.name, &setting);
    }
    if (group != KAL_CONFIG_GROUP_FEATURE) return declared;
    for (const SettingDeclaration& toggle : m_toggles) declared.try_emplace(toggle.name, &toggle);
    return declared;
  }

  NameIndex knownNames(KalConfigGroup group) const {
    NameIndex index;
    if (const auto known = m_expected.names.find(group); known != m_expected.names.end()) {
      for (const std::string& name : known->second) index.Add(name);
    }
    for (const SettingDeclaration& setting : m_expected.declared) {
      if (setting.group == group) index.Add(setting.name);
    }
    if (group != KAL_CONFIG_GROUP_FEATURE) return index;
    for (const SettingDeclaration& toggle : m_toggles) index.Add(toggle.name);
    return index;
  }

  void checkDeclared(SettingsGroup& group, KalConfigGroup id, std::size_t entry,
                     const SettingDeclaration& setting) {
    if (setting.deprecated) {
      addToName(group, SettingsProblem::kDeprecatedName, id, entry, aboutDeprecation(*setting.deprecated),
                setting.name);
    }
    const std::string_view stored = group.entries[entry].value;
    const ConfigData value{std::string(stored)};
    const char* const place = group.origins[entry].value;
    const auto addToValue = [&](SettingsProblem problem, const std::string& reason) {
      add(group, problem, id, entry, ".value", place, reason, setting.name);
    };
    switch (FaultOf(setting, value)) {
      case ValueFault::kNone:
        break;
      case ValueFault::kWrongType:
        addToValue(SettingsProblem::kWrongType,
                   "expected " + ExpectedType(setting.type) + aboutToggle(setting, value));
        break;
      case ValueFault::kOutOfRange:
        addToValue(SettingsProblem::kOutOfRange, "out of range: expected " + ExpectedRange(setting));
        break;
      case ValueFault::kNotAllowed: {
        addToValue(SettingsProblem::kNotAllowed, "not one of the values allowed: " + ExpectedValues(setting));
        if (HasRange(setting.type)) break;  // No number is meant to be another one.
        NameIndex index;
        for (const std::string& allowed : setting.values) index.Add(allowed);
        Suggest(group.findings.back(), index.Nearest(stored));
      }
    }
  }

  static std::string aboutDeprecation(const SettingDeprecation& deprecation) {
    std::string reason = "deprecated";
    if (!deprecation.since.empty()) reason += " since " + deprecation.since;
    if (!deprecation.replacedBy.empty()) reason += ": use " + deprecation.replacedBy;
    return reason;
  }

  // A toggle is read by IsFeatureToggleDefaultOn(), which takes any value.
  std::string aboutToggle(const SettingDeclaration& setting, const ConfigData& value) const {
    if (setting.group != KAL_CONFIG_GROUP_FEATURE || setting.type != SettingType::kBool) return {};
    // What a component declares there besides is read by a key, which gives its default.
    if (std::ranges::find(m_toggles, setting.name, &SettingDeclaration::name) == m_toggles.end()) return {};
    return value ? "; this value counts as on" : "; this value counts as off";
  }

  void addToName(SettingsGroup& group, SettingsProblem problem, KalConfigGroup id, std::size_t entry,
                 std::string reason, std::string_view name = {}) {
    add(group, problem, id, entry, ".key", group.origins[entry].name, std::move(reason), name);
  }

  void add(SettingsGroup& group, SettingsProblem problem, KalConfigGroup id, std::size_t entry,
           const char* member, const char* place, std::string reason, std::string_view name) {
    SettingsFinding& finding = group.findings.emplace_back();
    finding.problem = problem;
    finding.path = ElementPath(id, group.origins[entry].element) + member;
    finding.name = name;
    finding.reason = std::move(reason);
    finding.offset = static_cast<std::size_t>(place - m_text.data());
  }

  const std::string_view m_text;
  const Expected& m_expected;
  const std::vector<SettingDeclaration> m_toggles = FeatureToggleDeclarations();
  std::vector<SettingsEntry>* const m_entries;
};

std::vector<SettingsFinding> FindingsOf(std::string_view text, const Expected& expected,
                                        std::vector<SettingsEntry>* entries) {
  SettingsReader reader(text, SettingsReader::Findings::kAll);
  std::vector<SettingsFinding> findings;
  if (reader.Read()) {
    EntryCheck check(text, expected, entries);
    findings = std::move(reader.DocumentFindings());
    check.CheckGroupNames(findings);
    for (const KalConfigGroup id : GroupsByName()) {
      SettingsGroup& group = reader.Group(id);
      check.CheckEntries(id, group);
      std::ranges::move(group.findings, std::back_inserter(findings));
    }
  } else {
    findings.push_back(reader.Refusal());
  }
  PlaceFindings(text, findings);
  return findings;
}

}  // namespace

std::vector<SettingsFinding> CheckSettings(const std::string& text) {
  return CheckSettings(text, {}, {});
}

std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known) {
  return CheckSettings(text, known, {});
}

std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known,
                                           const std::vector<SettingDeclaration>& declared) {
  return FindingsOf(text, {known, declared}, nullptr);
}

SettingsContents ReadSettings(const std::string& text) {
  SettingsContents contents;
  contents.findings = FindingsOf(text, {{}, {}}, &contents.entries);
  return contents;
}

}  // namespace kalStore
