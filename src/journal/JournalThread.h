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
  const char* label;     ///< of the innermost JournalOrigin; null: none
  const char* document;  ///< of the innermost JournalDocument; null: none
  unsigned long id;      ///< GetThreadSelfId(); 0: not asked yet
  std::int64_t lastNs;   ///< the last time that JournalNowNs() gave
};

/// At a fixed distance from the thread's pointer, like t_call.
[[gnu::tls_model("initial-exec"),
  gnu::visibility("hidden")]] extern constinit thread_local JournalThread t_journal;

}  // namespace kalStore::internal
