#pragma once

#include "util/export.h"

/// Monotonic clocks that count microseconds from a moment of their own. Any thread may read them.
/// `max_time_value()` is the largest reading; a reading never comes near it in practice.
struct UTIL_API timer_policy {  ///< as fine as the system's monotonic clock
  static long now();
  static long max_time_value();
};

struct UTIL_API tick_policy {  ///< steps of whole milliseconds
  static long now();
  static long max_time_value();
};

struct UTIL_API low_tick_policy {  ///< steps of the system's coarse clock, a few milliseconds; the cheapest
  static long now();
  static long max_time_value();
};

/// A process-wide time in microseconds that meters use in place of their clock; -1 (the start value): none.
UTIL_API long get_mock_time();
/// The value that makes get_mock_time() -1, all bits set, switches mocking off.
UTIL_API void set_mock_time(unsigned long time);
