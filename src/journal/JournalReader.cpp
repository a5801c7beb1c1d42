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
    const JournalRing::Found found = journal.ring->Read(m_next, words);
    if (found == JournalRing::Found::kPending && journal.end - m_next <= capacity / 2) return false;
    const std::uint64_t number = m_next++;
    if (found == JournalRing::Found::kWhole) {
      event = Decode(words);
      // A delivery has the name and the values of its set, which is right before it.
      if (event.kind == JournalKind::kDelivered && event.cause != 0 &&
          journal.ring->Read(event.cause, words) == JournalRing::Found::kWhole) {
        JournalEvent set = Decode(words);
        event.name = std::move(set.name);
        event.oldValue = std::move(set.oldValue);
        event.newValue = std::move(set.newValue);
      }
      event.number = number;
      event.missed = std::exchange(m_missed, 0);
      return true;
    }
    ++m_missed;
  }
}

}  // namespace kalStore
