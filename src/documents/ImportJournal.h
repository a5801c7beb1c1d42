// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "documents/SettingsReader.h"
#include "journal/JournalRun.h"

namespace kalStore::internal {

/// An import for the journal: where in the document each set comes from, and the event of the whole.
class ImportJournal {
 public:
  /// Takes the places from the text while it is there. `reader` has read it, with places.
  ImportJournal(const void* caller, std::uint32_t callId, const char* text, SettingsReader& reader);

  /// Before the set of an entry.
  void BeginSet(KalConfigGroup group, std::size_t index);
  /// Calls `import`, which returns the import's result, and writes the event of the whole.
  template <class Import>
  std::int32_t Run(Import import) {
    std::int64_t endNs = 0;
    RunInJournal(m_entry, endNs, [&] { m_entry.result = import(); });
    return m_entry.result;
  }

 private:
  std::vector<JournalPlace>& placesOf(KalConfigGroup group) {
    return m_places[static_cast<std::size_t>(group)];
  }

  JournalEntry m_entry;
  const JournalPlace m_document;
  const CallerScope m_caller;
  PlaceScope m_place;
  std::array<std::vector<JournalPlace>, KAL_CONFIG_GROUP_LAST> m_places;
};

}  // namespace kalStore::internal
