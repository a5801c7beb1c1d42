// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRing.h"

namespace kalStore::internal {

JournalRing::JournalRing(unsigned int bits)
    : m_mask((std::uint64_t{1} << bits) - 1), m_places(std::make_unique<Place[]>(m_mask + 1)) {}

// Taking the place acquires: the words of its last record were stored before. Leaving it lost needs no order; whoever
// reads that state reads no words.
bool JournalRing::Begin(std::uint64_t number) {
  std::atomic<std::uint64_t>& state = placeOf(number).state;
  std::uint64_t found = state.load(std::memory_order_relaxed);
  while (found >> kStateBits < number) {
    const auto last = static_cast<State>(found & kLost);
    const bool isFree = last == kWhole || last == kLost;
    const std::uint64_t wanted = stateOf(number, isFree ? kWritten : kLostWhileWritten);
    if (state.compare_exchange_weak(found, wanted, std::memory_order_acquire, std::memory_order_relaxed)) {
      return isFree;
    }
  }
  return false;
}

void JournalRing::Fill(std::uint64_t number, std::span<const std::uint64_t> words) {
  Place& place = placeOf(number);
  for (std::size_t i = 0; i < words.size(); ++i) place.words[i].store(words[i], std::memory_order_release);
}

// Ending releases, for the next writer of the place and for readers.
void JournalRing::End(std::uint64_t number) {
  std::atomic<std::uint64_t>& state = placeOf(number).state;
  std::uint64_t found = stateOf(number, kWritten);
  if (state.compare_exchange_strong(found, stateOf(number, kWhole), std::memory_order_release,
                                    std::memory_order_relaxed)) {
    return;
  }
  // Later writers have left meanwhile; the last one's number names the place now.
  while (!state.compare_exchange_weak(found, found | kLost, std::memory_order_release,
                                      std::memory_order_relaxed)) {
  }
}

JournalRing::Found JournalRing::Read(std::uint64_t number, Words& words) const {
  const Place& place = placeOf(number);
  const std::uint64_t before = place.state.load(std::memory_order_acquire);
  if (before < stateOf(number, kLostWhileWritten) || before == stateOf(number, kWritten))
    return Found::kPending;
  if (before != stateOf(number, kWhole)) return Found::kGone;
  for (std::size_t i = 0; i < kWords; ++i) words[i] = place.words[i].load(std::memory_order_acquire);
  return place.state.load(std::memory_order_relaxed) == before ? Found::kWhole : Found::kGone;
}

}  // namespace kalStore::internal
