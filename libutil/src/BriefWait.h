#pragma once

#include <sched.h>

namespace cm {

/// Gives the processor away a few times until `isOver` returns true; false when it did not. What another
/// thread is about to do is often done then, and neither of the two has slept or been woken.
template <class IsOver>
bool WaitBriefly(IsOver isOver) {
  constexpr int kMostYields = 8;
  for (int left = kMostYields; !isOver(); --left) {
    if (left == 0) return false;
    sched_yield();
  }
  return true;
}

}  // namespace cm
