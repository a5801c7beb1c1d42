// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

#include "simulate/Recorder.h"
#include "tessel/locking.h"
#include "util/ConfigData.h"

namespace simulate {

/// One subscription as the ledger knows it: which deliveries it has yet to get. Measures each
/// delivery against its set.
///
/// Threads: all.
class Subscriber {
 public:
  /// The number of the delivery that subscribing itself causes.
  static constexpr std::uint64_t kInitial = 0;

  Subscriber(Recorder& recorder, Way way) : m_recorder(recorder), m_way(way) {}

  /// `set` is about to notify of this value.
  void Expect(std::uint64_t set, const ConfigData& value);
  /// `set` has changed nothing, and so notifies no one.
  void Withdraw(std::uint64_t set);
  /// The value has arrived, on the thread that it was to arrive on.
  void Arrive(const ConfigData& value);

  /// Deliveries of sets, the initial one not counted.
  std::uint64_t Arrived() const;
  /// Deliveries that are expected and have not arrived.
  std::size_t Missing() const;

 private:
  struct Expectation {
    std::uint64_t set;
    RunTime time;
    ConfigData value;
  };

  Recorder& m_recorder;
  const Way m_way;
  mutable kalStore::detail::Mutex<std::mutex> m_mutex;
  std::deque<Expectation> m_expected TESSEL_LOCKING(guarded_by(m_mutex));
  std::uint64_t m_arrived TESSEL_LOCKING(guarded_by(m_mutex)) = 0;
};

}  // namespace simulate
