// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

#include "journal/JournalSource.h"

namespace kalStore::internal {

/// Calls a function and writes the entry of it: how long it ran, and what it threw, which leaves here.
/// `entry.timeNs` is when it begins, `endNs` receives when it ended, in any case. `function` may complete the
/// entry. REQUIRES: a ComponentScope around, if it is a component's.
template <class Function>
void RunInJournal(JournalEntry& entry, std::int64_t& endNs, Function function) {
  const auto write = [&] {
    endNs = JournalNowNs();
    entry.ranNs = endNs - entry.timeNs;
    WriteJournal(entry);
  };
  try {
    function();
  } catch (const std::exception& error) {
    entry.thrown = error.what();
    write();
    throw;
  } catch (...) {
    entry.thrown = "not a std::exception";
    write();
    throw;
  }
  write();
}

}  // namespace kalStore::internal
