// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <utility>

#include "journal/JournalRecord.h"
#include "journal/JournalState.h"

namespace kalStore {

using namespace internal;

JournalReader::JournalReader() : m_next(JournalStartNumber()) {}

JournalReader::JournalReader(std::uint64_t number) : m_next(std::max<std::uint64_t>(number, 1)) {}

bool JournalReader::Next(JournalEvent& event) {
  for (;;) {
    const JournalState journal = CurrentJournal();
    if (m_next >= journal.end || journal.ring == nullptr) return false;
    const std::uint64_t capacity = journal.ring->Capacity();
    const std::uint64_t oldest = std::max(journal.begin, journal.end - std::min(journal.end, capacity));
    if (m_next < oldest) m_missed += oldest - std::exchange(m_next, oldest);

    JournalRing::Words words;
    const JournalRing::Found found = journal.ring->Read(m_next, words, &RecordSize);
    // In a ring of one, the newest is all there is.
    const std::uint64_t waitedFor = std::max<std::uint64_t>(capacity / 2, 1);
    if (found == JournalRing::Found::kPending && journal.end - m_next <= waitedFor) return false;
    if (found != JournalRing::Found::kWhole) {
      ++m_next;
      ++m_missed;
      continue;
    }
    JournalEvent read = Decode(words);
    // A delivery has the name and the values of its set, which is right before it.
    if (read.kind == JournalKind::kDelivered && read.cause != 0 &&
        journal.ring->Read(read.cause, words, &RecordSize) == JournalRing::Found::kWhole) {
      JournalEvent set = Decode(words);
      read.name = std::move(set.name);
      read.oldValue = std::move(set.oldValue);
      read.newValue = std::move(set.newValue);
    }
    // From here on nothing fails: an event whose copy ran out of memory is read again.
    read.number = m_next++;
    read.missed = std::exchange(m_missed, 0);
    event = std::move(read);
    return true;
  }
}

}  // namespace kalStore
