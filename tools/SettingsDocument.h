// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tessel/settings_check.h"

using kalStore::SettingsEntry;

/// Where a finding is, TITLE:LINE:COLUMN:, and what is wrong there.
std::string FindingPlace(const std::string& title, const kalStore::SettingsFinding& finding);
std::string FindingText(const kalStore::SettingsFinding& finding);

/// A document that is refused for what its first bytes show is said to be so: the finding that refuses it
/// gets the reason from ForeignFormat().
void ExplainFormat(const std::string& text, std::vector<kalStore::SettingsFinding>& findings);

/// A settings document that import accepts, read whole, with what import will make of each of its entries.
class SettingsDocument {
 public:
  /// Reads a file, or standard input for "-". Throws CommandError when it cannot be read, or is no JSON
  /// object in a text without zero bytes; the message has the line and column of the first fault.
  static SettingsDocument Load(const std::string& file);
  /// Takes a text that is called `name`. Throws likewise.
  SettingsDocument(std::string name, std::string text);

  /// The file's name, or "<stdin>".
  const std::string& Name() const { return m_name; }
  /// What messages call the document: the same as it can be shown.
  std::string Title() const;
  /// The text, as the file has it.
  const std::string& Text() const { return m_text; }
  /// What import sets, in its order. A name may occur more than once: the last value stays.
  const std::vector<SettingsEntry>& Entries() const { return m_contents.entries; }
  /// Writes a line for each part that import skips or that is most likely a mistake, in the order of the
  /// text.
  void PrintFindings(std::ostream& out) const;
  /// How many parts import skips.
  std::size_t SkippedCount() const;

 private:
  std::string m_name;
  std::string m_text;
  kalStore::SettingsContents m_contents;
};

/// Loads all of them before anything is done with the first. Throws CommandError, also when standard input is
/// named twice.
std::vector<SettingsDocument> LoadDocuments(const std::vector<std::string>& files);
