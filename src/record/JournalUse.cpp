// SPDX-License-Identifier: Apache-2.0
#include "record/JournalUse.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "record/Lock.h"
#include "tessel/journal.h"

namespace kalStore::internal {

namespace {

// Makes one of counting and switching: the last one does not turn off what the next first one has found on.
constinit detail::Mutex<std::mutex> g_useMutex;
constinit std::size_t g_uses TESSEL_LOCKING(guarded_by(g_useMutex)) = 0;
// The last start by which a use turned the journal on; 0: there was none.
constinit std::uint64_t g_ourStart TESSEL_LOCKING(guarded_by(g_useMutex)) = 0;

void BeginUse(std::size_t capacity) {
  const Lock lock(g_useMutex);
  // Also when there are others: who stopped the journal meanwhile did not mean this one.
  StartOwnJournal(std::clamp<std::size_t>(capacity, 1, kJournalLargestCapacity), g_ourStart);
  ++g_uses;
}

void EndUse() {
  const Lock lock(g_useMutex);
  if (--g_uses == 0) StopOwnJournal(g_ourStart);
}

}  // namespace

JournalUse::JournalUse(std::size_t capacity) {
  BeginUse(capacity);
}

JournalUse::~JournalUse() {
  EndUse();
}

}  // namespace kalStore::internal
