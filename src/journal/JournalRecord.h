// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "journal/JournalRing.h"
#include "tessel/journal.h"

class ConfigData;

namespace kalStore::internal {

/// Who did it. Views of what the thread has at the moment.
struct JournalSource {
  const void* caller = nullptr;
  std::string_view label{};
  std::string_view document{};
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

/// What a writer has of an event. Views: nothing is copied before it is written.
struct JournalEntry {
  JournalKind kind;
  std::uint32_t callId = 0;
  JournalSource source{};
  std::int64_t timeNs = 0;  ///< 0: now
  KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT;
  std::int32_t entityType = -1;
  const char* name = nullptr;            ///< may be null
  const ConfigData* oldValue = nullptr;  ///< null or not valid: none
  const ConfigData* newValue = nullptr;  ///< the same
  std::int32_t result = kResultOk;
  std::uint32_t count = 0;
  std::uint64_t id = 0;
  std::uint64_t cause = 0;
  JournalWay way = JournalWay::kNone;
  std::int64_t waitedNs = 0;
  std::int64_t ranNs = 0;
  const char* thrown = nullptr;  ///< null: nothing
};

/// Puts an entry into words, its strings cut; returns those that it took.
std::span<const std::uint64_t> Encode(const JournalEntry& entry, JournalRing::Words& words);
/// Makes an event of the words; all but its number and what was missed.
JournalEvent Decode(const JournalRing::Words& words);

}  // namespace kalStore::internal
