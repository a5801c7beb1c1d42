#pragma once

#include <cstddef>
#include <ostream>
#include <vector>

#include "SettingsDocument.h"
#include "tessel/IKalConfig.h"

/// What a step changes in a store: the values before it against those after it, so that a name which the step
/// sets twice is reported once, with what stays.
class ChangeReport {
 public:
  /// Notes the values that the entries' names have now. Both arguments must outlive the report.
  ChangeReport(kalStore::IKalConfig& store, const std::vector<SettingsEntry>& entries);

  /// Writes a line for each value that is another one now, in the order of the entries, then the counts.
  void Print(std::ostream& out, std::size_t skipped);

 private:
  struct Before {
    const SettingsEntry* entry;
    ConfigData value;
  };

  kalStore::IKalConfig& m_store;
  std::vector<Before> m_before;
};

/// The value in quotes, or "none".
std::string ShownValue(const ConfigData& value);
