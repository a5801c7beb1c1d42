// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

#include "journal/JournalSource.h"

namespace kalStore::internal {

/// Runs a component's callback and writes the entry of it: how long it ran, and what it threw, which leaves here.
/// `entry.timeNs` is when it begins. REQUIRES: a ComponentScope around. Returns when it ended. `callback` may complete the entry.
template <class Callback>
std::int64_t RunInJournal(JournalEntry& entry, Callback callback) {
  const auto write = [&] {
    const std::int64_t endNs = JournalNowNs();
    entry.ranNs = endNs - entry.timeNs;
    WriteJournal(entry);
    return endNs;
  };
  try {
    callback();
  } catch (const std::exception& error) {
    entry.thrown = error.what();
    write();
    throw;
  } catch (...) {
    entry.thrown = "not a std::exception";
    write();
    throw;
  }
  return write();
}

}  // namespace kalStore::internal
