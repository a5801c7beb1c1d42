// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "util/ICmEvent.h"

namespace cm::internal {

/// Events in the order in which they fire: by priority, smaller numbers first, and first in, first out within
/// one priority. Events of one priority form a run, whose first event points to its last: an insertion takes
/// one step for each run before its own, and most queues have one run. Threads: one owner. Does not own the
/// events.
class EventList {
 public:
  bool IsEmpty() const { return m_first == nullptr; }
  /// REQUIRES: not empty.
  unsigned int FirstPriority() const { return m_first->m_priority; }
  void Insert(ICmEvent* event);
  /// Removes the first event and returns it. REQUIRES: not empty.
  ICmEvent* Pop();

 private:
  ICmEvent* m_first = nullptr;
};

}  // namespace cm::internal
