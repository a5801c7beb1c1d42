#pragma once

#include "tessel/export.h"
#include "util/clock_policy.h"

/// A stopwatch over one of the clocks timer_policy, tick_policy and low_tick_policy: remembers a start tag
/// and tells how much time has passed since. The base unit is the clock's, microseconds.
///
/// While a mock time is set, it stands for the current time in every meter of the process.
/// Threads: one owner uses a meter; the mock time is shared by all threads.
template <class Policy>
class TESSEL_API timer_fact {
 public:
  /// As a time argument: take the current time. As a value of get_mock_time(): no mock time is in force.
  static constexpr long kMockTimeDisabled = -1;

  /// Starts at `tag` microseconds, or at the current time.
  explicit timer_fact(long tag = kMockTimeDisabled);
  /// Starts again, likewise.
  void reset(long tag = kMockTimeDisabled);

  /// The current time: the mock time if one is set, else the clock's.
  static long now();
  /// Sets the mock time of the process, in microseconds; all bits set switches mocking off.
  static void MockNow(unsigned long time);

  /// Time since the start tag, in microseconds. When the tag is ahead of the current time, the clock is taken
  /// to have wrapped at its largest value.
  long elapsed() const;
  /// In milliseconds: the difference of the readings, each cut to whole milliseconds first.
  long elapsed_mills() const;
  /// In seconds: the difference of the readings, each cut to whole seconds first.
  long elapsed_sec() const;

  /// Whether at least `limit` has passed; always true for a limit that is not positive and a tag not ahead.
  bool overtime(long limit) const;
  bool overtime_mills(long limit) const;
  bool overtime_sec(long limit) const;

  /// The start tag.
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
