#include "tessel/timer_fact.h"

namespace {

// Tags are the caller's and may be any number: differences wrap like the clock instead of overflowing.
long WrappingSum(long a, long b) {
  return static_cast<long>(static_cast<unsigned long>(a) + static_cast<unsigned long>(b));
}
long WrappingDifference(long a, long b) {
  return static_cast<long>(static_cast<unsigned long>(a) - static_cast<unsigned long>(b));
}

}  // namespace

template <class Policy>
timer_fact<Policy>::timer_fact(long tag) : m_tag(tag == kMockTimeDisabled ? now() : tag) {}

template <class Policy>
void timer_fact<Policy>::reset(long tag) {
  m_tag = tag == kMockTimeDisabled ? now() : tag;
}

template <class Policy>
long timer_fact<Policy>::now() {
  const long mock = get_mock_time();
  return mock != kMockTimeDisabled ? mock : Policy::now();
}

template <class Policy>
void timer_fact<Policy>::MockNow(unsigned long time) {
  set_mock_time(time);
}

template <class Policy>
long timer_fact<Policy>::since(long tag, long divisor) {
  const long current = now();
  const long currentUnits = current / divisor;
  const long tagUnits = tag / divisor;
  if (tagUnits <= currentUnits) return WrappingDifference(currentUnits, tagUnits);
  const long toWrap = WrappingDifference(Policy::max_time_value(), tag) / divisor;
  return toWrap != 0 ? WrappingSum(currentUnits, toWrap) : WrappingDifference(currentUnits, tagUnits);
}

template <class Policy>
long timer_fact<Policy>::elapsed() const {
  return since(m_tag, 1);
}

template <class Policy>
long timer_fact<Policy>::elapsed_mills() const {
  return since(m_tag, 1000);
}

template <class Policy>
long timer_fact<Policy>::elapsed_sec() const {
  return since(m_tag, 1000000);
}

template <class Policy>
bool timer_fact<Policy>::overtime(long limit) const {
  return limit <= elapsed();
}

template <class Policy>
bool timer_fact<Policy>::overtime_mills(long limit) const {
  return limit <= elapsed_mills();
}

template <class Policy>
bool timer_fact<Policy>::overtime_sec(long limit) const {
  return limit <= elapsed_sec();
}

template class timer_fact<timer_policy>;
template class timer_fact<tick_policy>;
template class timer_fact<low_tick_policy>;
