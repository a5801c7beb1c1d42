// SPDX-License-Identifier: Apache-2.0
#include "SettingsDocument.h"

#include <algorithm>
#include <utility>

#include "CommandError.h"
#include "Printable.h"
#include "Progress.h"
#include "TextFile.h"

using kalStore::SettingsEffect;
using kalStore::SettingsFinding;

namespace {

kalStore::SettingsContents Contents(const std::string& name, const std::string& text) {
  const Progress progress("checking " + Printable(name));
  kalStore::SettingsContents contents = kalStore::ReadSettings(text);
  ExplainFormat(text, contents.findings);
  return contents;
}

}  // namespace

std::string FindingPlace(const std::string& title, const SettingsFinding& finding) {
  return title + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ":";
}

std::string FindingText(const SettingsFinding& finding) {
  return (finding.path.empty() ? "" : Printable(finding.path) + ": ") + Printable(finding.reason);
}

void ExplainFormat(const std::string& text, std::vector<SettingsFinding>& findings) {
  if (findings.empty() || kalStore::EffectOf(findings.front().problem) != SettingsEffect::kRefused) return;
  const std::string reason = ForeignFormat(text);
  if (reason.empty()) return;
  SettingsFinding& finding = findings.front();
  finding = SettingsFinding();
  finding.reason = reason;
  finding.line = finding.column = 1;
}

SettingsDocument::SettingsDocument(std::string name, std::string text)
    : m_name(std::move(name)), m_text(std::move(text)), m_contents(Contents(m_name, m_text)) {
  for (const SettingsFinding& finding : m_contents.findings) {
    if (kalStore::EffectOf(finding.problem) != SettingsEffect::kRefused) continue;
    throw CommandError(FindingPlace(Title(), finding) + " " + FindingText(finding));
  }
}

std::string SettingsDocument::Title() const {
  return Printable(m_name);
}

void SettingsDocument::PrintFindings(std::ostream& out) const {
  for (const SettingsFinding& finding : m_contents.findings) {
    out << FindingPlace(Title(), finding) << ' ' << FindingText(finding) << '\n';
  }
}

std::size_t SettingsDocument::SkippedCount() const {
  return static_cast<std::size_t>(
      std::ranges::count(m_contents.findings, SettingsEffect::kSkipped,
                         [](const SettingsFinding& finding) { return kalStore::EffectOf(finding.problem); }));
}

SettingsDocument SettingsDocument::Load(const std::string& file) {
  return SettingsDocument(FileName(file), ReadFile(file));
}

std::vector<SettingsDocument> LoadDocuments(const std::vector<std::string>& files) {
  RefuseRepeatedInput(files);
  std::vector<SettingsDocument> documents;
  documents.reserve(files.size());
  for (const std::string& file : files) documents.push_back(SettingsDocument::Load(file));
  return documents;
}
