// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRing.h"

#include <algorithm>

namespace kalStore::internal {

JournalRing::JournalRing(unsigned int bits)
    : m_mask((std::uint64_t{1} << bits) - 1), m_places(std::make_unique<Place[]>(std::size_t{1} << bits)) {}

// Relaxed: whoever finds its number lost reads nothing else of it.
void JournalRing::lose(Place& place, std::uint64_t number) {
  std::uint64_t found = place.lost.load(std::memory_order_relaxed);
  while (found < number && !place.lost.compare_exchange_weak(found, number, std::memory_order_relaxed)) {
  }
}

JournalRing::Found JournalRing::Read(std::uint64_t number, Words& words, Size size) const {
  const Place& place = placeOf(number);
  const std::uint64_t before = place.state.load(std::memory_order_acquire);
  if (before >> 1 < number) {
    // A later number that is lost is a lap ahead of this one at least: it would be gone soon.
    return place.lost.load(std::memory_order_relaxed) >= number ? Found::kGone : Found::kPending;
  }
  if (before == number << 1) return Found::kPending;
  if (before != (number << 1 | kWhole)) return Found::kGone;
  words[0] = place.words[0].load(std::memory_order_acquire);
  const std::size_t count = std::min(size(words[0]), kWords);
  for (std::size_t i = 1; i < count; ++i) words[i] = place.words[i].load(std::memory_order_acquire);
  return place.state.load(std::memory_order_relaxed) == before ? Found::kWhole : Found::kGone;
}

}  // namespace kalStore::internal
