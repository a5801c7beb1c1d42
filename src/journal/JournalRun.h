// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

#include "journal/JournalSource.h"

namespace kalStore::internal {

/// Calls `function`, and then `write` with what it threw, which then leaves here; null: nothing.
template <class Function, class Write>
void RunAndWrite(Function function, Write write) {
  try {
    function();
  } catch (const std::exception& error) {
    write(error.what());
    throw;
  } catch (...) {
    write("not a std::exception");
    throw;
  }
  write(nullptr);
}

/// Calls a function and writes the entry of it: how long it ran, and what it threw, which leaves here.
/// `entry.timeNs` is when it begins. `function` may complete the entry. REQUIRES: a ComponentScope around, if
/// it is a component's.
template <class Function>
void RunInJournal(JournalEntry& entry, Function function) {
  RunAndWrite(function, [&](const char* thrown) {
    entry.ranNs = JournalNowNs() - entry.timeNs;
    entry.thrown = thrown;
    WriteJournal(entry);
  });
}

}  // namespace kalStore::internal
