// SPDX-License-Identifier: Apache-2.0
#include <optional>

#include "documents/GroupOrder.h"
#include "documents/ImportJournal.h"
#include "documents/SettingsReader.h"
#include "tessel/KalConfig.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

// The caller's text is read whole before the first line and the first set: a trace sink or a callback may
// free it, as by dumping the store whose dump is imported.
std::int32_t KalConfig::ApplyKalConfigs(const char* szJsonConfig) {
  if (szJsonConfig == nullptr) return kResultNotFound;
  const bool isInJournal = JournalIsOn();
  SettingsReader reader(szJsonConfig,
                        isInJournal ? SettingsReader::Findings::kPlaces : SettingsReader::Findings::kNone);
  const bool isRead = reader.Read();
  std::optional<ImportJournal> journal;
  const JournalSource source = SourceOf(__builtin_return_address(0));
  PlaceScope place;  // Also when the journal is off: a callback may start it.
  if (isInJournal) journal.emplace(source, m_callId, place);
  TESSEL_TRACE(2, "kalStore::KalConfig::ApplyKalConfigs",
               Cid{m_callId} << "szJsonConfig=" << szJsonConfig << This{this});

  const auto import = [&]() -> std::int32_t {
    if (!isRead) return kResultNotFound;
    for (const KalConfigGroup group : GroupsByName()) {
      // Goes with the group, so that the lists and what the store makes of them never take their memory
      // together.
      const EntryList entries = std::move(reader.Group(group).entries);
      for (std::size_t index = 0; index < entries.size(); ++index) {
        const EntryList::Entry entry = entries[index];
        if (journal) [[unlikely]]
          journal->BeginSet(entry);
        SetKalConfig(group, entry.name, ConfigData(std::string(entry.value)), false, false);
      }
    }
    return kResultOk;
  };
  return journal ? journal->Run(import) : import();
}

}  // namespace kalStore
