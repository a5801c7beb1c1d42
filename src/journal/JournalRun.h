// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

#include "journal/JournalSource.h"

namespace kalStore::internal {

/// Calls `function`, and then `write`: also when it throws. The entry then has what it threw, which leaves
/// here.
template <class Function, class Write>
void RunAndWrite(JournalEntry& entry, Function function, Write write) {
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

/// Calls a function and writes the entry of it: how long it ran, and what it threw, which leaves here.
/// `entry.timeNs` is when it begins, `endNs` receives when it ended, in any case. `function` may complete the
/// entry. REQUIRES: a ComponentScope around, if it is a component's.
template <class Function>
void RunInJournal(JournalEntry& entry, std::int64_t& endNs, Function function) {
  RunAndWrite(entry, function, [&] {
    endNs = JournalNowNs();
    entry.ranNs = endNs - entry.timeNs;
    WriteJournal(entry);
  });
}

}  // namespace kalStore::internal
