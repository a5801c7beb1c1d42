// SPDX-License-Identifier: Apache-2.0
#include "tessel/timer_fact.h"

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

// Tags are the caller's and may be any number: the difference of two can be too large for a long, and is
// taken without a sign.
template <class Policy>
long timer_fact<Policy>::since(long tag, long divisor) {
  using Distance = unsigned long;
  const long current = now() / divisor;
  const long start = tag / divisor;
  const Distance toWrap =
      start > current ? (Distance(Policy::max_time_value()) - Distance(tag)) / Distance(divisor) : 0;
  return static_cast<long>(Distance(current) + (toWrap != 0 ? toWrap : -Distance(start)));
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
