#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tessel/KalConfigGroup.h"
#include "tessel/settings_check.h"

/// An entry of a settings document that import sets.
struct SettingsEntry {
  kalStore::KalConfigGroup group;
  std::string name;   ///< As the store takes it: ends at the first zero byte, never empty.
  std::string value;  ///< Any bytes.
};

/// A settings document that import accepts, read whole, with what import will make of each of its entries.
class SettingsDocument {
 public:
  /// Reads a file, or standard input for "-". Throws CommandError when it cannot be read, or is no JSON
  /// object in a text without zero bytes; the message has the line and column of the first fault.
  static SettingsDocument Load(const std::string& file);

  /// What messages call the document: the file's name as it can be shown, or "<stdin>".
  const std::string& Title() const { return m_title; }
  /// The text, as the file has it.
  const std::string& Text() const { return m_text; }
  /// What import sets, in its order. A name may stand more than once: the last value stays.
  const std::vector<SettingsEntry>& Entries() const { return m_entries; }
  /// Writes a line for each part that import skips or that is most likely a mistake, in the order of the
  /// text.
  void PrintFindings(std::ostream& out) const;
  /// How many parts import skips.
  std::size_t SkippedCount() const;

 private:
  SettingsDocument(std::string title, std::string text);

  std::string m_title;
  std::string m_text;
  std::vector<SettingsEntry> m_entries;
  std::vector<kalStore::SettingsFinding> m_findings;
};

/// Loads all of them before anything is done with the first. Throws CommandError, also when standard input is
/// named twice.
std::vector<SettingsDocument> LoadDocuments(const std::vector<std::string>& files);
