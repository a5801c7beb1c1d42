// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Monotonic clocks that count microseconds from an arbitrary start. None ever wraps, but where a `long` has
/// 32 bits: there each starts again at 0 after its largest reading, every 36 minutes.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// const long before = timer_policy::now();
/// assert(timer_policy::now() >= before);
/// assert(tick_policy::now() % 1000 == 0);
/// assert(get_mock_time() == -1);
/// set_mock_time(5000000);
/// assert(get_mock_time() == 5000000 && timer_fact<timer_policy>::now() == 5000000);
/// set_mock_time(static_cast<unsigned long>(-1));
/// @endcode

#include "util/export.h"

/// As fine as the system's monotonic clock.
struct UTIL_API timer_policy {
  /// @return The time, in microseconds.
  static long now();
  /// @return The largest reading, in microseconds.
  static long max_time_value();
};

/// Steps of whole milliseconds.
struct UTIL_API tick_policy {
  /// @return The time, in microseconds.
  static long now();
  /// @return The largest reading, in microseconds.
  static long max_time_value();
};

/// Steps of the system's coarse clock, a few milliseconds; the cheapest.
struct UTIL_API low_tick_policy {
  /// @return The time, in microseconds.
  static long now();
  /// @return The largest reading, in microseconds.
  static long max_time_value();
};

/// @return The process-wide time in microseconds that meters use in place of their clock; -1, as at the
/// start: none.
UTIL_API long get_mock_time();
/// Sets the time that meters use in place of their clock.
/// @param time  in microseconds; the value that makes get_mock_time() -1, all bits set, switches mocking off
UTIL_API void set_mock_time(unsigned long time);
