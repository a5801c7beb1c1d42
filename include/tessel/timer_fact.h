// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/export.h"
#include "util/clock_policy.h"

/// A stopwatch over one of the clocks timer_policy, tick_policy and low_tick_policy: holds a start tag and
/// measures the time since. The base unit is the clock's, microseconds.
///
/// Where a `long` has 32 bits, a clock starts again at 0 every 36 minutes: a meter there measures less than
/// that.
///
/// While a mock time is set, every meter of the process takes it for the current time.
///
/// @threads One owner uses a meter; the mock time is shared by all threads.
/// @par Example
/// @code{.cpp}
/// using meter_t = timer_fact<timer_policy>;
/// meter_t::MockNow(1000000);
/// meter_t meter;
/// meter_t::MockNow(3500000);
/// assert(meter.elapsed() == 2500000 && meter.elapsed_mills() == 2500 && meter.elapsed_sec() == 2);
/// assert(meter.overtime_sec(2) && !meter.overtime_sec(3));
/// meter_t::MockNow(static_cast<unsigned long>(meter_t::kMockTimeDisabled));
/// @endcode
template <class Policy>
class TESSEL_API timer_fact {
 public:
  /// As a time argument: take the current time. As a value of get_mock_time(): no mock time is in force.
  static constexpr long kMockTimeDisabled = -1;

  /// Starts.
  /// @param tag  the start, in microseconds; -1: the current time
  explicit timer_fact(long tag = kMockTimeDisabled);
  /// Starts again.
  /// @param tag  the start, in microseconds; -1: the current time
  void reset(long tag = kMockTimeDisabled);

  /// @return The current time in microseconds: the mock time if one is set, else the clock's.
  static long now();
  /// Sets the mock time of the process.
  /// @param time  in microseconds; all bits set switches mocking off
  static void MockNow(unsigned long time);

  /// Measures the time since the start tag. A tag ahead of the current time means that the clock has wrapped
  /// at its largest value: the result is then the time to that value and the current time, added; only where
  /// the first of the two is 0 it is the plain, negative difference.
  /// @return Microseconds.
  long elapsed() const;
  /// The same in milliseconds: tag, current time and time to the largest value are each cut, toward zero, to
  /// whole milliseconds first.
  /// @return Milliseconds.
  long elapsed_mills() const;
  /// The same in seconds.
  /// @return Seconds.
  long elapsed_sec() const;

  ///@{
  /// Whether elapsed(), elapsed_mills() or elapsed_sec() has reached a limit.
  /// @param limit  in microseconds, milliseconds or seconds
  /// @return Whether the limit is at most the elapsed time.
  bool overtime(long limit);
  bool overtime_mills(long limit);
  bool overtime_sec(long limit);
  ///@}

  /// @return The start tag, in microseconds.
  long latest_tag() const { return m_tag; }

 private:
  static long since(long tag, long divisor);

  long m_tag;
};

extern template class timer_fact<timer_policy>;
extern template class timer_fact<tick_policy>;
extern template class timer_fact<low_tick_policy>;

namespace kalStore {
using ::timer_fact;
}  // namespace kalStore
