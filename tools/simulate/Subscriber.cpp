// SPDX-License-Identifier: Apache-2.0
#include "simulate/Subscriber.h"

#include <algorithm>

namespace simulate {

void Subscriber::Expect(std::uint64_t set, const ConfigData& value) {
  ++m_recorder.expectedDeliveries;
  const kalStore::detail::Lock lock(m_mutex);
  m_expected.push_back({set, m_recorder.Now(), value});
}

void Subscriber::Withdraw(std::uint64_t set) {
  const kalStore::detail::Lock lock(m_mutex);
  m_recorder.expectedDeliveries -=
      std::erase_if(m_expected, [&](const Expectation& expected) { return expected.set == set; });
}

void Subscriber::Arrive(const ConfigData& value) {
  const kalStore::detail::Lock lock(m_mutex);
  const auto found = std::find_if(m_expected.begin(), m_expected.end(),
                                  [&](const Expectation& expected) { return expected.value == value; });
  if (found == m_expected.end()) {
    ++m_recorder.unexpectedDeliveries;
    return;
  }
  if (found != m_expected.begin()) ++m_recorder.deliveriesOutOfOrder;
  if (found->set == kInitial) {
    ++m_recorder.initialDeliveries;
  } else {
    m_recorder.AddDelivery(m_way, found->time);
    ++m_arrived;
  }
  m_expected.erase(found);
}

std::uint64_t Subscriber::Arrived() const {
  const kalStore::detail::Lock lock(m_mutex);
  return m_arrived;
}

std::size_t Subscriber::Missing() const {
  const kalStore::detail::Lock lock(m_mutex);
  return m_expected.size();
}

}  // namespace simulate
