// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "journal/JournalRing.h"

namespace kalStore::internal {

/// What readers see of the journal.
struct JournalState {
  const JournalRing* ring;  ///< null: there was no start yet
  std::uint64_t begin;      ///< the first number that the ring has, or had
  std::uint64_t end;        ///< the next number
};
JournalState CurrentJournal();

/// The first number since the last start.
std::uint64_t JournalStartNumber();

}  // namespace kalStore::internal
