// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "statistics/RelaxedAccess.h"

namespace kalStore::internal {

/// Takes the growth of a counter since the previous report, and sets `total` to the counter that it goes up
/// to. Of two readers at once one takes a growth: the other one fails to exchange `reported`, and starts from
/// what the first one left. Acquire and release: the counter that is read then is at least as new as the
/// first reader's.
inline std::uint32_t TakeGrowth(std::uint32_t& reported, const std::uint32_t& counter, std::uint32_t& total) {
  std::uint32_t previous = __atomic_load_n(&reported, __ATOMIC_ACQUIRE);
  do {
    total = relaxed::Load(counter);
  } while (
      !__atomic_compare_exchange_n(&reported, &previous, total, false, __ATOMIC_RELEASE, __ATOMIC_ACQUIRE));
  return total - previous;
}

}  // namespace kalStore::internal
