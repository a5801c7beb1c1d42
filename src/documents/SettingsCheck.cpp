#include "tessel/settings_check.h"

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "documents/NameIndex.h"
#include "documents/NearestName.h"
#include "json/Reader.h"
#include "json/TextParts.h"
#include "json/TextPlace.h"
#include "store/FeatureToggleKeys.h"
#include "tessel/KalConfigGroup.h"

namespace kalStore {

using namespace internal;

namespace {

using json::MemberText;

const char* KindOf(std::string_view value) {
  switch (value.front()) {
    case '"':
      return "a string";
    case '{':
      return "an object";
    case '[':
      return "an array";
    case 't':
    case 'T':
    case 'f':
    case 'F':
      return "true or false";
    case 'n':
    case 'N':
      return "null";
    default:
      return "a number";
  }
}

bool IsText(std::string_view value) {
  return value.front() == '"';
}

std::string ElementPath(const std::string& groupName, std::size_t index) {
  return groupName + "[" + std::to_string(index) + "]";
}

// The walk that import makes, over the text instead of its values.
class Check {
 public:
  /// `entries` takes what import sets, and may be null.
  Check(std::string_view text, const SettingsNames& known, std::vector<SettingsEntry>* entries)
      : m_text(text.substr(0, text.find('\0'))),
        m_endsAtZero(m_text.size() != text.size()),
        m_known(known),
        m_entries(entries) {}

  std::vector<SettingsFinding> Findings() && {
    const json::ParseError error = json::FaultOf(m_text);
    if (error.reason != nullptr && m_endsAtZero && error.offset == m_text.size()) {
      add(SettingsProblem::kZeroByte, m_text.data() + error.offset, "", "a zero byte ends the document");
    } else if (error.reason != nullptr) {
      add(SettingsProblem::kNoJson, m_text.data() + error.offset, "", error.reason);
    } else {
      checkDocument(json::DocumentOf(m_text));
    }
    place();
    return std::move(m_findings);
  }

 private:
  // Where a name stands: in its group, in the text, and among the entries that are imported.
  struct Named {
    std::size_t index;
    const char* at;
    std::size_t imported;
  };

  void checkDocument(std::string_view document) {
    if (document.front() != '{') {
      add(SettingsProblem::kNoObject, document.data(), "",
          std::string("expected an object of groups, found ") + KindOf(document));
      return;
    }
    std::map<std::string, const MemberText*> read;  // The last of each group, in the order of import.
    std::vector<MemberText> members;
    json::ReadMembers(document, members);
    for (const MemberText& member : members) {
      const std::string name(textOf(member.key));
      if (!IsConfigGroup(GroupName2KalConfigGroup(name))) {
        addUnknown(SettingsProblem::kUnknownGroup, member.key.data(), name, name, NearestGroupName(name),
                   "unknown group");
        continue;
      }
      if (const MemberText* earlier = std::exchange(read[name], &member)) {
        add(SettingsProblem::kRepeatedGroup, earlier->key.data(), name,
            "the group stands again below; only the last one is read", name);
      }
    }
    for (const auto& [name, member] : read) checkGroup(name, member->value);
  }

  void checkGroup(const std::string& groupName, std::string_view array) {
    if (array.front() != '[') {
      add(SettingsProblem::kNoArray, array.data(), groupName,
          std::string("expected an array of entries, found ") + KindOf(array));
      return;
    }
    m_group = GroupName2KalConfigGroup(groupName);
    m_places.clear();
    fillIndex();
    const std::vector<std::string_view> elements = json::ElementsOf(array);
    m_places.reserve(elements.size());
    if (m_entries != nullptr) m_entries->reserve(m_entries->size() + elements.size());
    for (std::size_t index = 0; index < elements.size(); ++index) {
      checkEntry(groupName, index, elements[index]);
    }
  }

  void checkEntry(const std::string& groupName, std::size_t index, std::string_view element) {
    const auto path = [&] { return ElementPath(groupName, index); };
    if (element.front() != '{') {
      add(SettingsProblem::kNoEntry, element.data(), path(),
          std::string("expected an object with \"key\" and \"value\", found ") + KindOf(element));
      return;
    }

    constexpr const char* kParts[] = {"key", "value"};
    const MemberText* parts[2] = {};
    json::ReadMembers(element, m_members);
    for (const MemberText& member : m_members) {
      const std::string_view memberName = textOf(member.key);
      for (std::size_t part = 0; part < 2; ++part) {
        if (memberName != kParts[part]) continue;
        if (const MemberText* earlier = std::exchange(parts[part], &member)) {
          add(SettingsProblem::kRepeatedMember, earlier->key.data(), path() + "." + kParts[part],
              std::string("\"") + kParts[part] + "\" stands again in the entry; the last one counts");
        }
      }
    }
    for (std::size_t part = 0; part < 2; ++part) {
      if (parts[part] == nullptr) {
        add(SettingsProblem::kNoMember, element.data(), path(),
            std::string("\"") + kParts[part] + "\" is missing");
        return;
      }
      if (!IsText(parts[part]->value)) {
        add(SettingsProblem::kNoText, parts[part]->value.data(), path() + "." + kParts[part],
            std::string("expected a string, found ") + KindOf(parts[part]->value));
        return;
      }
    }
    const std::string_view key = parts[0]->value;
    std::string_view name = textOf(key);
    name = name.substr(0, name.find('\0'));  // A store's names are C texts.
    const std::size_t imported = m_entries == nullptr ? 0 : m_entries->size();
    if (m_entries != nullptr && !name.empty()) {
      m_entries->push_back({m_group, std::string(name), std::string(textOf(parts[1]->value)), true});
    }
    checkName(groupName, {index, key.data(), imported}, name);
  }

  void checkName(const std::string& groupName, Named entry, std::string_view name) {
    if (name.empty()) {
      add(SettingsProblem::kEmptyName, entry.at, ElementPath(groupName, entry.index) + ".key",
          "the name is empty");
      return;
    }
    if (m_checksNames && !m_index.Has(name)) {
      const bool isToggle = m_group == KAL_CONFIG_GROUP_FEATURE;
      addUnknown(isToggle ? SettingsProblem::kUnknownToggle : SettingsProblem::kUnknownName, entry.at,
                 ElementPath(groupName, entry.index) + ".key", std::string(name), m_index.Nearest(name),
                 isToggle ? "no feature toggle has this name" : "unknown name");
    }
    const auto [found, isNew] = m_places.try_emplace(name, entry);
    if (isNew) return;
    const Named earlier = std::exchange(found->second, entry);
    if (m_entries != nullptr) (*m_entries)[earlier.imported].stays = false;
    add(SettingsProblem::kRepeatedName, earlier.at, ElementPath(groupName, earlier.index) + ".key",
        "the name stands again in " + ElementPath(groupName, entry.index) + "; the last value stays",
        std::string(name));
  }

  // What a string's text says; lives as long as the check.
  std::string_view textOf(std::string_view quoted) {
    if (quoted.find('\\') == std::string_view::npos) return quoted.substr(1, quoted.size() - 2);
    return m_unescaped.emplace_back(std::move(json::ParseDocument(quoted).ToString()));
  }

  // The names that the group at hand may have.
  void fillIndex() {
    const auto known = m_known.find(m_group);
    m_checksNames = known != m_known.end() || m_group == KAL_CONFIG_GROUP_FEATURE;
    m_index = NameIndex();
    if (known != m_known.end()) {
      for (const std::string& name : known->second) m_index.Add(name);
    }
    if (m_group != KAL_CONFIG_GROUP_FEATURE) return;
    for (std::int32_t id = 0; id < KAL_FT_Unknow; ++id) {
      m_index.Add(FeatureToggleKey(static_cast<KalFeatureToggleID>(id)));
    }
  }

  void add(SettingsProblem problem, const char* at, std::string path, std::string reason,
           std::string name = {}) {
    SettingsFinding& finding = m_findings.emplace_back();
    finding.problem = problem;
    finding.path = std::move(path);
    finding.name = std::move(name);
    finding.reason = std::move(reason);
    finding.offset = static_cast<std::size_t>(at - m_text.data());
  }

  void addUnknown(SettingsProblem problem, const char* at, std::string path, std::string name,
                  std::string nearest, std::string reason) {
    if (!nearest.empty()) reason += " (did you mean \"" + nearest + "\"?)";
    add(problem, at, std::move(path), std::move(reason), std::move(name));
    m_findings.back().nearest = std::move(nearest);
  }

  // Puts the findings in the order of the text, and gives each its line and column.
  void place() {
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const auto& a, const auto& b) { return a.offset < b.offset; });
    json::TextPlace place;
    std::size_t passed = 0;
    for (SettingsFinding& finding : m_findings) {
      place.Advance(m_text.substr(passed, finding.offset - passed));
      passed = finding.offset;
      finding.line = place.line;
      finding.column = place.column;
    }
  }

  const std::string_view m_text;  // What import reads: a C string.
  const bool m_endsAtZero;
  const SettingsNames& m_known;
  std::vector<SettingsEntry>* const m_entries;
  std::vector<SettingsFinding> m_findings;
  std::deque<std::string> m_unescaped;
  // Of the group at hand:
  KalConfigGroup m_group = KAL_CONFIG_GROUP_LAST;
  std::unordered_map<std::string_view, Named> m_places;  // Where each name stands last.
  bool m_checksNames = false;
  NameIndex m_index;
  std::vector<MemberText> m_members;  // Of the entry at hand.
};

}  // namespace

std::vector<SettingsFinding> CheckSettings(const std::string& text) {
  return CheckSettings(text, {});
}

std::vector<SettingsFinding> CheckSettings(const std::string& text, const SettingsNames& known) {
  return Check(text, known, nullptr).Findings();
}

SettingsContents ReadSettings(const std::string& text) {
  SettingsContents contents;
  contents.findings = Check(text, {}, &contents.entries).Findings();
  return contents;
}

std::string NearestGroupName(const std::string& name) {
  std::array<std::string, KAL_CONFIG_GROUP_LAST> names;
  NearestName nearest(name);
  for (std::uint32_t group = 0; group < names.size(); ++group) {
    names[group] = KalConfigGroup2GroupName(static_cast<KalConfigGroup>(group));
    nearest.Consider(names[group]);
  }
  return nearest.Result();
}

}  // namespace kalStore
