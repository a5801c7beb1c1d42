// SPDX-License-Identifier: Apache-2.0
#include "documents/ImportJournal.h"

namespace kalStore::internal {

ImportJournal::ImportJournal(const JournalSource& source, std::uint32_t callId, PlaceScope& place)
    : m_entry{.kind = JournalKind::kApplied, .callId = callId, .source = source, .timeNs = JournalNowNs()},
      m_document{.document = t_journal.document},
      m_caller(source.caller),
      m_place(place) {
  m_entry.source.place = &m_document;
}

void ImportJournal::BeginSet(const EntryList::Entry& entry) {
  ++m_entry.count;
  m_place.MoveTo({m_document.document, entry.line, entry.column});
}

}  // namespace kalStore::internal
