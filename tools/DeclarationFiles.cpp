// SPDX-License-Identifier: Apache-2.0
#include "DeclarationFiles.h"

#include <algorithm>

#include "CommandError.h"
#include "Printable.h"
#include "TextFile.h"

namespace {

std::string MistakeLine(const std::string& title, const kalStore::DeclarationFinding& finding) {
  return title + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
         (finding.path.empty() ? "" : finding.path + ": ") + PrintableJson(finding.reason);
}

}  // namespace

std::vector<kalStore::SettingDeclaration> ReadDeclarationFiles(const std::vector<std::string>& files) {
  std::vector<std::string> texts;
  for (const std::string& file : files) {
    texts.push_back(ReadFile(file));
    const std::string foreign = ForeignFormat(texts.back());
    if (!foreign.empty()) throw CommandError(FileTitle(file) + ":1:1: " + foreign);
  }
  kalStore::SettingsDeclarations read = kalStore::ReadDeclarations(texts);
  std::string lines;
  for (const kalStore::DeclarationFinding& finding : read.findings) {
    lines += (lines.empty() ? "" : "\n") + MistakeLine(FileTitle(files[finding.document]), finding);
  }
  if (!lines.empty()) throw CommandError(lines);
  return std::move(read.settings);
}
