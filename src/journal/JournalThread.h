// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace kalStore::internal {

/// Of the document that is imported: where the entry is that is set.
struct JournalPlace {
  const char* document = nullptr;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

/// What the journal has of each thread.
struct JournalThread {
  const char* label;          ///< of the innermost JournalOrigin; null: none
  const char* document;       ///< of the innermost JournalDocument; null: none
  const void* caller;         ///< of the outermost CallerScope; null: none
  const JournalPlace* place;  ///< of the PlaceScope; null: none
  unsigned long id;           ///< GetThreadSelfId(); 0: not asked yet
};

/// Read several times in each operation: at a fixed distance from the thread's pointer, rather than looked up
/// by a call each time. A library that is loaded later takes that from the room that the system's loader
/// reserves for it, of which these few words need little.
[[gnu::tls_model("initial-exec"),
  gnu::visibility("hidden")]] extern constinit thread_local JournalThread t_journal;

}  // namespace kalStore::internal
