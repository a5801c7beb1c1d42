// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "documents/EntryList.h"
#include "journal/JournalRun.h"

namespace kalStore::internal {

/// An import for the journal: where in the document each set comes from, and the event of the whole.
class ImportJournal {
 public:
  ImportJournal(const JournalSource& source, std::uint32_t callId, PlaceScope& place);

  /// Before the set of an entry.
  void BeginSet(const EntryList::Entry& entry);
  /// Calls `import`, which returns the import's result, and writes the event of the whole.
  template <class Import>
  std::int32_t Run(Import import) {
    RunInJournal(m_entry, [&] { m_entry.result = import(); });
    return m_entry.result;
  }

 private:
  JournalEntry m_entry;
  const JournalPlace m_document;
  const CallerScope m_caller;
  PlaceScope& m_place;
};

}  // namespace kalStore::internal
