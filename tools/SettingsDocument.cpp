#include "SettingsDocument.h"

#include <algorithm>
#include <utility>

#include "CommandError.h"
#include "Printable.h"
#include "TextFile.h"
#include "tessel/json.h"

namespace {

using kalStore::SettingsEffect;
using kalStore::SettingsFinding;

std::string* TextMember(json::Value& entry, const char* name) {
  if (entry.GetType() != json::ObjectVal) return nullptr;
  const auto found = entry.ToObject().find(name);
  if (found == entry.ToObject().end() || found->second.GetType() != json::StringVal) return nullptr;
  return &found->second.ToString();
}

// The entries that import sets; what it skips is for CheckSettings() to tell.
std::vector<SettingsEntry> EntriesOf(const std::string& text) {
  std::vector<SettingsEntry> entries;
  json::Value document = json::Deserialize(text);
  for (auto& [groupName, elements] : document.ToObject()) {
    const kalStore::KalConfigGroup group = kalStore::GroupName2KalConfigGroup(groupName);
    if (!kalStore::IsConfigGroup(group) || elements.GetType() != json::ArrayVal) continue;
    for (json::Value& element : elements.ToArray()) {
      const std::string* const key = TextMember(element, "key");
      std::string* const value = TextMember(element, "value");
      if (key == nullptr || value == nullptr || *key->c_str() == '\0') continue;
      // NOLINTNEXTLINE(readability-redundant-string-cstr): a name ends at its first zero byte.
      entries.push_back({group, key->c_str(), std::move(*value)});
    }
  }
  return entries;
}

}  // namespace

SettingsDocument::SettingsDocument(std::string title, std::string text)
    : m_title(std::move(title)), m_text(std::move(text)), m_findings(kalStore::CheckSettings(m_text)) {
  for (const SettingsFinding& finding : m_findings) {
    if (kalStore::EffectOf(finding.problem) != SettingsEffect::kRefused) continue;
    throw CommandError(m_title + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) +
                       ": " + finding.reason);
  }
  m_entries = EntriesOf(m_text);
}

void SettingsDocument::PrintFindings(std::ostream& out) const {
  for (const SettingsFinding& finding : m_findings) {
    out << m_title << ':' << finding.line << ':' << finding.column << ": " << Printable(finding.path) << ": "
        << finding.reason << '\n';
  }
}

std::size_t SettingsDocument::SkippedCount() const {
  return static_cast<std::size_t>(
      std::count_if(m_findings.begin(), m_findings.end(), [](const SettingsFinding& finding) {
        return kalStore::EffectOf(finding.problem) == SettingsEffect::kSkipped;
      }));
}

SettingsDocument SettingsDocument::Load(const std::string& file) {
  return SettingsDocument(FileTitle(file), ReadFile(file));
}

std::vector<SettingsDocument> LoadDocuments(const std::vector<std::string>& files) {
  if (std::count(files.begin(), files.end(), kStandardInput) > 1) {
    throw UsageError("standard input can be read once only");
  }
  std::vector<SettingsDocument> documents;
  documents.reserve(files.size());
  for (const std::string& file : files) documents.push_back(SettingsDocument::Load(file));
  return documents;
}
