// SPDX-License-Identifier: Apache-2.0
#include "documents/SettingsReader.h"

#include <utility>

#include "documents/PlacedValue.h"
#include "json/EventReader.h"

namespace kalStore::internal {

std::string ElementPath(KalConfigGroup group, std::size_t index) {
  return KalConfigGroup2GroupName(group) + "[" + std::to_string(index) + "]";
}

SettingsReader::SettingsReader(std::string_view text, Findings findings)
    : m_text(text.substr(0, text.find('\0'))),
      m_endsAtZero(m_text.size() != text.size()),
      m_finds(findings == Findings::kAll),
      m_findsPlaces(findings == Findings::kPlaces),
      m_passed(m_text.data()) {}

bool SettingsReader::Read() {
  EventReader reader(m_text, *this);
  if (reader.Read()) return m_noObject == nullptr;
  m_faultPlace = reader.FaultPlace();
  m_faultReason = reader.FaultReason();
  return false;
}

SettingsFinding SettingsReader::Refusal() const {
  if (m_faultReason == nullptr) {
    std::vector<SettingsFinding> findings;
    findExpected(findings, SettingsProblem::kNoObject, m_noObject, "", "an object of groups");
    return findings.front();
  }
  if (m_endsAtZero && m_faultPlace == m_text.data() + m_text.size()) {
    return finding(SettingsProblem::kZeroByte, m_faultPlace, "", "a zero byte ends the document");
  }
  return finding(SettingsProblem::kNoJson, m_faultPlace, "", m_faultReason);
}

void SettingsReader::BeginObject(const char* at) {
  if (m_in == In::kNothing) {
    m_in = In::kDocument;
  } else if (m_in == In::kGroup) {
    beginEntry(at);
  } else {
    readOther(at);
    skip();
  }
}

void SettingsReader::BeginArray(const char* at) {
  if (m_in == In::kDocument && m_group != KAL_CONFIG_GROUP_LAST) {
    m_in = In::kGroup;
    m_element = 0;
  } else {
    readOther(at);
    skip();
  }
}

void SettingsReader::Key(const JsonString& key) {
  if (m_in == In::kEntry) {
    readEntryKey(key);
  } else if (m_in == In::kDocument) {
    readGroupKey(key);
  }
}

// The last member of a group's name counts, whatever its value is.
void SettingsReader::readGroupKey(const JsonString& key) {
  std::string name;
  key.AppendTo(name);
  m_group = GroupName2KalConfigGroup(name);
  if (!IsConfigGroup(m_group)) {
    if (!m_finds) return;
    m_findings.push_back(finding(SettingsProblem::kUnknownGroup, key.Place(), name, "unknown group"));
    m_findings.back().name = std::move(name);
    return;
  }
  if (m_finds && group().key != nullptr) {
    m_findings.push_back(finding(SettingsProblem::kRepeatedGroup, group().key, name,
                                 "the group is repeated below; only the last one is read"));
    m_findings.back().name = std::move(name);
  }
  group() = {};
  group().key = key.Place();
}

void SettingsReader::readEntryKey(const JsonString& key) {
  m_part = nullptr;
  for (Part& part : m_parts) {
    if (!key.Is(part.name)) continue;
    if (m_finds && part.key != nullptr) {
      group().findings.push_back(finding(
          SettingsProblem::kRepeatedMember, part.key, ElementPath(m_group, m_element) + "." + part.name,
          std::string("\"") + part.name + "\" is repeated in the entry; the last one counts"));
    }
    part.key = key.Place();
    m_part = &part;
  }
}

void SettingsReader::String(const JsonString& string) {
  if (m_in == In::kEntry) {
    setPart(string.Place(), &string);
  } else {
    readOther(string.Place());
  }
}

// A value of a kind that a settings document does not have at its place.
void SettingsReader::readOther(const char* at) {
  switch (m_in) {
    case In::kNothing:
      m_noObject = at;
      break;
    case In::kDocument:
      if (!m_finds || m_group == KAL_CONFIG_GROUP_LAST) break;
      findExpected(group().findings, SettingsProblem::kNoArray, at, KalConfigGroup2GroupName(m_group),
                   "an array of entries");
      break;
    case In::kGroup:
      if (m_finds) {
        findExpected(group().findings, SettingsProblem::kNoEntry, at, ElementPath(m_group, m_element),
                     "an object with \"key\" and \"value\"");
      }
      ++m_element;
      break;
    case In::kEntry:
      setPart(at, nullptr);
      break;
    case In::kSkipped:
      break;
  }
}

void SettingsReader::setPart(const char* at, const JsonString* string) {
  if (m_part == nullptr) return;
  m_part->value = at;
  m_part->isString = string != nullptr;
  if (string != nullptr) m_part->string = *string;
}

void SettingsReader::skip() {
  if (m_skipped++ == 0) m_around = std::exchange(m_in, In::kSkipped);
}

void SettingsReader::end() {
  switch (m_in) {
    case In::kSkipped:
      if (--m_skipped == 0) m_in = m_around;
      break;
    case In::kEntry:
      endEntry();
      m_in = In::kGroup;
      break;
    case In::kGroup:
      m_in = In::kDocument;
      break;
    default:
      m_in = In::kNothing;
  }
}

void SettingsReader::beginEntry(const char* at) {
  m_in = In::kEntry;
  m_entry = at;
  for (Part& part : m_parts) part.key = nullptr;
}

void SettingsReader::endEntry() {
  const std::size_t element = m_element++;
  for (const Part& part : m_parts) {
    if (part.key != nullptr && part.isString) continue;
    if (!m_finds) return;
    const std::string path = ElementPath(m_group, element);
    if (part.key == nullptr) {
      group().findings.push_back(finding(SettingsProblem::kNoMember, m_entry, path,
                                         std::string("\"") + part.name + "\" is missing"));
    } else {
      findExpected(group().findings, SettingsProblem::kNoText, part.value, path + "." + part.name,
                   "a string");
    }
    return;
  }
  if (m_findsPlaces) {
    const char* const name = m_parts[0].value;
    m_place.Advance({m_passed, static_cast<std::size_t>(name - m_passed)});
    m_passed = name;
  }
  group().entries.Append(m_parts[0].string, m_parts[1].string, m_place);
  if (m_finds) group().origins.push_back({element, m_parts[0].value, m_parts[1].value});
}

void SettingsReader::findExpected(std::vector<SettingsFinding>& findings, SettingsProblem problem,
                                  const char* at, std::string path, const char* expected) const {
  findings.push_back(
      finding(problem, at, std::move(path), std::string("expected ") + expected + ", found " + KindOf(at)));
}

SettingsFinding SettingsReader::finding(SettingsProblem problem, const char* at, std::string path,
                                        std::string reason) const {
  SettingsFinding made;
  made.problem = problem;
  made.path = std::move(path);
  made.reason = std::move(reason);
  made.offset = static_cast<std::size_t>(at - m_text.data());
  return made;
}

}  // namespace kalStore::internal
