// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

namespace cm::internal {

/// Yields the processor a few times until `isOver` returns true; false when it never did. Another thread has
/// often done by then what the caller waits for, and neither of the two had to sleep or be woken.
template <class IsOver>
bool WaitBriefly(IsOver isOver) {
  constexpr int kMostYields = 8;
  for (int left = kMostYields; !isOver(); --left) {
    if (left == 0) return false;
    sched_yield();
  }
  return true;
}

}  // namespace cm::internal
