// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "journal/Journal.h"
#include "journal/JournalEncoder.h"

// What writes events. Part of its callers, which are few: WriteJournal() is for all that happens seldom.

namespace kalStore::internal {

/// WriteJournal() as a part of its caller.
///
/// The number comes first, then the ring: a number from the ring's first one on was drawn after the start
/// that published the ring had drawn that one in the same order, by operations that acquire and release, so
/// it is written in that ring, or in a later one.
[[gnu::always_inline]] inline std::uint64_t WriteJournalHere(const JournalEntry& entry) {
  const std::uint64_t number =
      entry.number != 0 ? entry.number : g_journalNumber.next.fetch_add(1, std::memory_order_acq_rel);
  JournalRing* const ring = g_journalRing.load(std::memory_order_acquire);
  // The switch is read without order: its change may be seen before that of the ring.
  if (ring == nullptr) return number;
  if (JournalRing::PlaceWords* const words = ring->Begin(number)) {
    Encode(entry, *words);
    ring->End(number);
  }
  return number;
}

}  // namespace kalStore::internal
