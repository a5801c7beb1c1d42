#pragma once

#include "util/clock_policy.h"

namespace kalStore::internal {

/// The monotonic time in milliseconds, from the clock itself: a mock time stops neither the removal's wait
/// nor the measure of slow callbacks.
inline long NowMs() {
  return timer_policy::now() / 1000;
}

}  // namespace kalStore::internal
