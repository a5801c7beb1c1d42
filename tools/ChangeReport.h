// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "Change.h"
#include "SettingsDocument.h"
#include "tessel/IKalConfig.h"

/// What a step changes in a store: the values before it against those after it, so that a name which the step
/// sets twice is reported once, with the last value.
class ChangeReport {
 public:
  /// Notes the values that the entries' names have now. Both arguments must outlive the report.
  ChangeReport(kalStore::IKalConfig& store, const std::vector<SettingsEntry>& entries);

  /// The values that are other ones now, in the order of the entries that stay, whose names they
  /// borrow.
  std::vector<Change> Changes();

  /// How many names the entries have.
  std::size_t NameCount() const { return m_before.size(); }

 private:
  struct Before {
    const SettingsEntry* entry;
    ConfigData value;
  };

  kalStore::IKalConfig& m_store;
  std::vector<Before> m_before;
};
