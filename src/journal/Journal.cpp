// SPDX-License-Identifier: Apache-2.0
#include "journal/Journal.h"

#include <atomic>
#include <bit>
#include <memory>
#include <mutex>
#include <utility>

#include "journal/JournalState.h"
#include "journal/JournalWriter.h"
#include "tessel/locking.h"

namespace kalStore {

namespace internal {

alignas(64) constinit std::atomic<bool> g_isJournalOn{false};
constinit JournalNumber g_journalNumber;
alignas(128) constinit std::atomic<JournalRing*> g_journalRing{nullptr};

namespace {

constinit std::atomic<std::uint64_t> g_ringBegin{1};    // The first number that is in g_journalRing, or was.
constinit std::atomic<std::uint64_t> g_startNumber{1};  // The first number since the last start.
constinit std::atomic<std::uint64_t> g_starts{0};

// Starts, one at a time. Stops, writers and readers do without.
constinit detail::Mutex<std::mutex> g_startMutex;

// A ring for each power of two that was ever asked for. They are never freed: a writer may be late, and a
// ring that is used again may still have one. Its number is then lower than those of the new life, and the
// ring knows what to do.
constexpr unsigned int kMostBits = std::bit_width(kJournalLargestCapacity - 1);
constinit JournalRing* g_rings[kMostBits + 1] TESSEL_LOCKING(guarded_by(g_startMutex)) = {};

JournalRing& RingOf(std::size_t capacity) TESSEL_LOCKING(requires_capability(g_startMutex)) {
  const auto bits = static_cast<unsigned int>(std::bit_width(capacity - 1));
  JournalRing*& ring = g_rings[bits];
  if (ring == nullptr) ring = std::make_unique<JournalRing>(bits).release();
  return *ring;
}

// Under the lock, so that the next start comes after what is done by the answer.
bool IsLastStart(std::uint64_t start) TESSEL_LOCKING(requires_capability(g_startMutex)) {
  return JournalStarts() == start;
}

}  // namespace

std::uint64_t WriteJournal(const JournalEntry& entry) noexcept {
  return WriteJournalHere(entry);
}

JournalState CurrentJournal() {
  // The ring before its first number: one that is newer than the ring only makes events of it missed.
  const JournalRing* const ring = g_journalRing.load(std::memory_order_acquire);
  return {ring, g_ringBegin.load(std::memory_order_acquire),
          g_journalNumber.next.load(std::memory_order_acquire)};
}

std::uint64_t JournalStartNumber() {
  return g_startNumber.load(std::memory_order_acquire);
}

}  // namespace internal

using namespace internal;

std::int32_t StartJournal(std::size_t capacity) {
  std::uint64_t start = 0;
  return StartOwnJournal(capacity, start);
}

std::int32_t StartOwnJournal(std::size_t capacity, std::uint64_t& start) {
  if (capacity == 0 || capacity > kJournalLargestCapacity) return kResultBadArgument;
  const detail::Lock lock(g_startMutex);
  if (JournalIsOn()) return kResultUnchanged;
  JournalRing& ring = RingOf(capacity);
  const bool isAnother = g_journalRing.load(std::memory_order_relaxed) != &ring;
  g_journalRing.store(&ring, std::memory_order_release);
  // Relaxed: whoever acquires a number that was drawn since the start finds it counted, by the next step.
  start = g_starts.fetch_add(1, std::memory_order_relaxed) + 1;
  // Draws no number, but takes its turn among those who do.
  const std::uint64_t first = g_journalNumber.next.fetch_add(0, std::memory_order_acq_rel);
  if (isAnother) g_ringBegin.store(first, std::memory_order_release);
  g_startNumber.store(first, std::memory_order_release);
  JournalNowNs();  // The stretch begins over which the rate of its counter is measured.
  g_isJournalOn.store(true, std::memory_order_relaxed);
  return kResultOk;
}

// Beside a start that has not turned the journal on yet, it finds it off.
std::int32_t StopJournal() {
  return g_isJournalOn.exchange(false, std::memory_order_relaxed) ? kResultOk : kResultUnchanged;
}

std::int32_t StopOwnJournal(std::uint64_t start) {
  const detail::Lock lock(g_startMutex);
  return IsLastStart(start) ? StopJournal() : kResultUnchanged;
}

bool IsJournalOn() {
  return JournalIsOn();
}

std::uint64_t JournalStarts() {
  return g_starts.load(std::memory_order_relaxed);
}

std::size_t JournalCapacity() {
  const JournalRing* const ring = g_journalRing.load(std::memory_order_acquire);
  return ring == nullptr ? 0 : static_cast<std::size_t>(ring->Capacity());
}

std::uint64_t NextJournalNumber() {
  return g_journalNumber.next.load(std::memory_order_acquire);
}

}  // namespace kalStore
