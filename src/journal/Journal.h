// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "journal/JournalClock.h"
#include "journal/JournalRecord.h"
#include "journal/JournalRing.h"

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

/// The running number, which every writer changes. Nothing else is on its pair of cache lines, of which
/// processors fetch both.
struct alignas(128) JournalNumber {
  std::atomic<std::uint64_t> next{1};
};
[[gnu::visibility("hidden")]] extern constinit JournalNumber g_journalNumber;
/// The ring of the last start; null: there was none yet.
[[gnu::visibility("hidden")]] alignas(128) extern constinit std::atomic<JournalRing*> g_journalRing;

/// Draws the number of an event that is written later: under the lock that orders what happened. Whatever
/// happens meanwhile, the number must then be written: readers wait for it.
///
/// Two numbers that are drawn under one lock have the order in which it was held: what happens before a
/// change of a variable comes before it in the variable's order, too.
inline std::uint64_t DrawJournalNumber() {
  const std::uint64_t number = g_journalNumber.next.fetch_add(1, std::memory_order_acq_rel);
  const JournalRing* const ring = g_journalRing.load(std::memory_order_acquire);
  if (ring != nullptr) ring->Prefetch(number);
  return number;
}

/// Writes an event; also when the journal has just been stopped. Returns its number. REQUIRES: the journal
/// was on once.
std::uint64_t WriteJournal(const JournalEntry& entry) noexcept;

}  // namespace kalStore::internal
