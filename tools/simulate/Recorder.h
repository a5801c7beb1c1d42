// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "Way.h"
#include "simulate/LatencyHistogram.h"

namespace simulate {

/// Nanoseconds since the run began.
using RunTime = std::int64_t;

constexpr double Seconds(RunTime time) {
  return static_cast<double>(time) * 1e-9;
}

/// What all components of a run count, and the clock that they go by: the run begins with it.
///
/// Threads: all.
class Recorder {
 public:
  RunTime Now() const {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - m_start)
        .count();
  }

  /// A change that was set at `set` has just arrived.
  void AddDelivery(Way way, RunTime set) { m_latencies[IndexOf(way)].Add(Now() - set); }
  const LatencyHistogram& Latencies(Way way) const { return m_latencies[IndexOf(way)]; }

  std::uint64_t SetCount() const { return setsNotified + setsWithoutSubscribers + setsUnchanged; }
  std::uint64_t DeliveryCount() const {
    std::uint64_t count = initialDeliveries;
    for (const LatencyHistogram& latencies : m_latencies) count += latencies.Count();
    return count;
  }

  using Counter = std::atomic<std::uint64_t>;

  Counter setsNotified{0};            ///< Sets with a subscriber.
  Counter setsWithoutSubscribers{0};  ///< Sets without a subscriber.
  Counter setsUnchanged{0};           ///< Sets of the value that the store has: no one is notified.
  Counter initialDeliveries{0};
  Counter expectedDeliveries{0};    ///< Sets times their subscribers, and the initial ones.
  Counter unexpectedDeliveries{0};  ///< Of values that were not set, or twice of one set.
  Counter deliveriesOutOfOrder{0};
  Counter reads{0};
  Counter statisticsWrites{0};
  Counter statisticsReads{0};
  Counter framesSent{0};
  Counter framesReported{0};

 private:
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
  PerWay<LatencyHistogram> m_latencies;
};

}  // namespace simulate
