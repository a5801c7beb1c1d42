// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace kalStore::internal {

/// Holds the journal on. The first of the process turns it on, unless it is on already; then the last one
/// turns it off again, if nobody else has meanwhile, and started it again.
class JournalUse {
 public:
  /// @param capacity  see StartJournal(); the nearest that is possible
  explicit JournalUse(std::size_t capacity);
  JournalUse(const JournalUse&) = delete;
  JournalUse& operator=(const JournalUse&) = delete;
  ~JournalUse();
};

}  // namespace kalStore::internal
