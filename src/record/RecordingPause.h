// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace kalStore::internal {

/// Between two looks at the journal, when little happens: what a crash may cost.
constexpr std::chrono::milliseconds kMostPause{100};
constexpr std::chrono::milliseconds kLeastPause{1};

/// How long to wait before the next look: until a quarter of the ring is new, at the rate of the last time.
/// @param passed  in this time, so many events were new
/// @param capacity  of the ring that the journal has: whoever started it chose it
inline std::chrono::nanoseconds PauseAfter(std::chrono::nanoseconds passed, std::uint64_t events,
                                           std::size_t capacity) {
  const double quarter = static_cast<double>(capacity) / 4;
  const std::chrono::duration<double, std::nano> pause =
      passed * (quarter / static_cast<double>(std::max<std::uint64_t>(events, 1)));
  if (pause > kMostPause) return kMostPause;
  return std::max<std::chrono::nanoseconds>(std::chrono::duration_cast<std::chrono::nanoseconds>(pause),
                                            kLeastPause);
}

}  // namespace kalStore::internal
