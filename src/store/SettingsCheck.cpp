#include "tessel/settings_check.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "FeatureToggleKeys.h"
#include "NearestName.h"
#include "Reader.h"
#include "TextParts.h"
#include "TextPlace.h"
#include "tessel/KalConfigGroup.h"

namespace kalStore {
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

std::string TextOf(std::string_view quoted) {
  return std::move(json::ParseDocument(quoted).ToString());
}

std::string ElementPath(const std::string& groupName, std::size_t index) {
  return groupName + "[" + std::to_string(index) + "]";
}

// The walk that import makes, over the text instead of its values.
class Check {
 public:
  explicit Check(std::string_view text) : m_text(text) {}

  std::vector<SettingsFinding> Findings() && {
    json::ParseError error;
    json::ParseDocument(m_text, &error);
    if (error.reason != nullptr) {
      add(SettingsProblem::kNoJson, m_text.data() + error.offset, "", error.reason);
    } else {
      checkDocument(json::DocumentOf(m_text));
    }
    place();
    return std::move(m_findings);
  }

 private:
  struct Named {
    std::size_t index;
    const char* at;
  };

  void checkDocument(std::string_view document) {
    if (document.front() != '{') {
      add(SettingsProblem::kNoObject, document.data(), "",
          std::string("expected an object of groups, found ") + KindOf(document));
      return;
    }
    if (const std::size_t zero = m_text.find('\0'); zero != std::string_view::npos) {
      add(SettingsProblem::kZeroByte, m_text.data() + zero, "",
          "a zero byte ends the document inside a string");
      return;
    }

    std::array<const MemberText*, KAL_CONFIG_GROUP_LAST> read{};  // The last of each group.
    const std::vector<MemberText> members = json::MembersOf(document);
    for (const MemberText& member : members) {
      const std::string name = TextOf(member.key);
      const KalConfigGroup group = GroupName2KalConfigGroup(name);
      if (!IsConfigGroup(group)) {
        addUnknown(SettingsProblem::kUnknownGroup, member.key.data(), name, name, NearestGroupName(name),
                   "unknown group");
        continue;
      }
      if (const MemberText* earlier = std::exchange(read[group], &member)) {
        add(SettingsProblem::kRepeatedGroup, earlier->key.data(), name,
            "the group stands again below; only the last one is read", name);
      }
    }
    for (std::uint32_t group = 0; group < read.size(); ++group) {
      if (read[group] != nullptr) checkGroup(static_cast<KalConfigGroup>(group), read[group]->value);
    }
  }

  void checkGroup(KalConfigGroup group, std::string_view array) {
    const std::string groupName = KalConfigGroup2GroupName(group);
    if (array.front() != '[') {
      add(SettingsProblem::kNoArray, array.data(), groupName,
          std::string("expected an array of entries, found ") + KindOf(array));
      return;
    }
    m_names.clear();
    const std::vector<std::string_view> elements = json::ElementsOf(array);
    for (std::size_t index = 0; index < elements.size(); ++index) {
      checkEntry(group, groupName, index, elements[index]);
    }
  }

  void checkEntry(KalConfigGroup group, const std::string& groupName, std::size_t index,
                  std::string_view element) {
    const auto path = [&] { return ElementPath(groupName, index); };
    if (element.front() != '{') {
      add(SettingsProblem::kNoEntry, element.data(), path(),
          std::string("expected an object with \"key\" and \"value\", found ") + KindOf(element));
      return;
    }

    constexpr const char* kParts[] = {"key", "value"};
    const MemberText* parts[2] = {};
    const std::vector<MemberText> members = json::MembersOf(element);
    for (const MemberText& member : members) {
      const std::string memberName = TextOf(member.key);
      for (std::size_t part = 0; part < 2; ++part) {
        if (memberName != kParts[part]) continue;
        if (const MemberText* earlier = std::exchange(parts[part], &member)) {
          add(SettingsProblem::kRepeatedMember, earlier->key.data(), path() + "." + memberName,
              "\"" + memberName + "\" stands again in the entry; the last one counts");
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
    checkName(group, groupName, {index, key.data()}, TextOf(key));
  }

  void checkName(KalConfigGroup group, const std::string& groupName, Named entry, std::string name) {
    name.resize(std::min(name.size(), name.find('\0')));  // A store's names are C texts.
    if (name.empty()) {
      add(SettingsProblem::kEmptyName, entry.at, ElementPath(groupName, entry.index) + ".key",
          "the name is empty");
      return;
    }
    if (group == KAL_CONFIG_GROUP_FEATURE && !isToggle(name)) {
      NearestName nearest(name);
      for (const std::string_view toggle : m_toggles) nearest.Consider(toggle);
      addUnknown(SettingsProblem::kUnknownToggle, entry.at, ElementPath(groupName, entry.index) + ".key",
                 name, nearest.Result(), "no feature toggle has this name");
    }
    const auto [found, isNew] = m_names.try_emplace(std::move(name), entry);
    if (isNew) return;
    const Named earlier = std::exchange(found->second, entry);
    add(SettingsProblem::kRepeatedName, earlier.at, ElementPath(groupName, earlier.index) + ".key",
        "the name stands again in " + ElementPath(groupName, entry.index) + "; the last value stays",
        found->first);
  }

  bool isToggle(std::string_view name) {
    if (m_toggles.empty()) {
      for (std::int32_t id = 0; id < KAL_FT_Unknow; ++id) {
        m_toggles.emplace_back(FeatureToggleKey(static_cast<KalFeatureToggleID>(id)));
      }
      std::sort(m_toggles.begin(), m_toggles.end());
    }
    return std::binary_search(m_toggles.begin(), m_toggles.end(), name);
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

  const std::string_view m_text;
  std::vector<SettingsFinding> m_findings;
  std::unordered_map<std::string, Named> m_names;  // Of the group at hand: where each stands last.
  std::vector<std::string_view> m_toggles;         // Sorted; empty until needed.
};

}  // namespace

std::vector<SettingsFinding> CheckSettings(const std::string& text) {
  return Check(text).Findings();
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
