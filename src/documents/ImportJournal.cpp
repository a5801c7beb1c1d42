// SPDX-License-Identifier: Apache-2.0
#include "documents/ImportJournal.h"

#include "json/TextPlace.h"

namespace kalStore::internal {

ImportJournal::ImportJournal(const void* caller, std::uint32_t callId, const char* text,
                             SettingsReader& reader)
    : m_entry{.kind = JournalKind::kApplied,
              .callId = callId,
              .source = SourceOf(caller),
              .timeNs = JournalNowNs()},
      m_document{.document = t_journal.document},
      m_caller(caller) {
  m_entry.source.place = &m_document;
  for (std::size_t group = 0; group < m_places.size(); ++group) {
    TextPlace place;
    const char* passed = text;
    for (const SettingsGroup::Origin& origin : reader.Group(static_cast<KalConfigGroup>(group)).origins) {
      place.Advance({passed, static_cast<std::size_t>(origin.name - passed)});
      passed = origin.name;
      m_places[group].push_back({m_document.document, static_cast<std::uint32_t>(place.line),
                                 static_cast<std::uint32_t>(place.column)});
    }
  }
}

void ImportJournal::BeginSet(KalConfigGroup group, std::size_t index) {
  ++m_entry.count;
  m_place.MoveTo(placesOf(group)[index]);
}

}  // namespace kalStore::internal
