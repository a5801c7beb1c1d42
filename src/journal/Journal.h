// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "journal/JournalClock.h"
#include "journal/JournalRecord.h"

namespace kalStore::internal {

/// Whether the journal is on. Read in every operation, written by starts and stops alone: it shares its cache
/// line with nothing that changes. Said to be hidden here, too: otherwise its address would be looked up each
/// time.
[[gnu::visibility("hidden")]] alignas(64) extern constinit std::atomic<bool> g_isJournalOn;

/// Whether operations write events. Relaxed: an operation beside a start or a stop may write or not; what it
/// writes with was published by other means, see WriteJournal().
inline bool JournalIsOn() {
  return g_isJournalOn.load(std::memory_order_relaxed);
}

/// Draws the number of an event that is written later: under the lock that orders what happened. Whatever
/// happens meanwhile, the number must then be written: readers wait for it.
std::uint64_t DrawJournalNumber() noexcept;

/// Writes an event; also when the journal has just been stopped. Returns its number. REQUIRES: the journal
/// was on once.
std::uint64_t WriteJournal(const JournalEntry& entry) noexcept;

}  // namespace kalStore::internal
