// SPDX-License-Identifier: Apache-2.0
#include "tessel/timer_fact.h"

namespace {

// Tags are the caller's and may be any number: the difference of two can be too large for a long.
__extension__ using Wide = __int128;

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
  const Wide current = now() / divisor;
  const Wide start = tag / divisor;
  const Wide toWrap = start > current ? (Wide{Policy::max_time_value()} - tag) / divisor : 0;
  return static_cast<long>(toWrap != 0 ? current + toWrap : current - start);
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
bool timer_fact<Policy>::overtime(long limit) {
  return limit <= elapsed();
}

template <class Policy>
bool timer_fact<Policy>::overtime_mills(long limit) {
  return limit <= elapsed_mills();
}

template <class Policy>
bool timer_fact<Policy>::overtime_sec(long limit) {
  return limit <= elapsed_sec();
}

template class timer_fact<timer_policy>;
template class timer_fact<tick_policy>;
template class timer_fact<low_tick_policy>;
