// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "journal/JournalRing.h"
#include "journal/JournalThread.h"
#include "tessel/journal.h"

class ConfigData;

namespace kalStore::internal {

/// Who did it. Pointers to what the thread has at the moment.
struct JournalSource {
  const void* caller = nullptr;
  const char* label = nullptr;          ///< null: none
  const JournalPlace* place = nullptr;  ///< null: none
};

/// What a writer has of an event. Views: nothing is copied before it is written.
struct JournalEntry {
  JournalKind kind;
  JournalWay way = JournalWay::kNone;
  std::uint64_t number = 0;  ///< from DrawJournalNumber(); 0: the next one
  std::uint32_t callId = 0;
  JournalSource source{};
  std::int64_t timeNs = 0;  ///< 0: now
  KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT;
  std::int32_t entityType = -1;
  std::string_view name{};
  const ConfigData* oldValue = nullptr;  ///< null or not valid: none
  const ConfigData* newValue = nullptr;  ///< the same
  std::int32_t result = kResultOk;
  std::uint32_t count = 0;
  std::uint64_t id = 0;
  std::uint64_t cause = 0;
  std::int64_t waitedNs = 0;
  std::int64_t ranNs = 0;
  const char* thrown = nullptr;  ///< null: nothing; an event of a document's entry has none
};

/// How many words a record has with this first one.
std::size_t RecordSize(std::uint64_t first);
/// Makes an event of the words; all but its number and what was missed.
JournalEvent Decode(const JournalRing::Words& words);

}  // namespace kalStore::internal
