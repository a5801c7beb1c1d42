// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "simulate/Recorder.h"
#include "tessel/locking.h"

namespace simulate {

enum class Media { kAudio, kVideo };

/// A link with a queue before it that gets worse and better: its capacity falls from 3 Mbit/s to a tenth and
/// comes back, once in a cycle. What it cannot carry waits in the queue, and is lost where the queue is full;
/// a bad link also loses more. The same for every run.
///
/// Threads: all.
class Link {
 public:
  /// `phase`: where in the cycle the link begins, 0 to 1.
  Link(double cycleSeconds, double phase) : m_cycleSeconds(cycleSeconds), m_phase(phase) {}

  /// Packets enter at their sender.
  void Send(Media media, RunTime now, std::uint32_t packets, double bits);

  /// Packets of one kind that have left the link, or were lost, since the start.
  struct Traffic {
    std::uint32_t received = 0;
    std::uint32_t lost = 0;
    double bits = 0;
  };
  Traffic Received(Media media) const;

  struct State {
    double capacity = 0;  ///< bit/s
    double loss = 0;      ///< Of the packets sent lately, 0 to 1.
    double delayMs = 0;   ///< From sender to receiver.
    double jitterMs = 0;  ///< How much the delay varies.
  };
  State Now(RunTime now);

 private:
  double quality(RunTime now) const;
  void advance(RunTime now) TESSEL_LOCKING(requires_capability(m_mutex));
  double random() TESSEL_LOCKING(requires_capability(m_mutex));

  const double m_cycleSeconds;
  const double m_phase;
  mutable kalStore::detail::Mutex<std::mutex> m_mutex;
  RunTime m_time TESSEL_LOCKING(guarded_by(m_mutex)) = 0;
  State m_state TESSEL_LOCKING(guarded_by(m_mutex));
  double m_queuedBits TESSEL_LOCKING(guarded_by(m_mutex)) = 0;
  std::array<Traffic, 2> m_traffic TESSEL_LOCKING(guarded_by(m_mutex));
  // Parts of packets that are lost with the next ones.
  std::array<double, 2> m_lossRemainder TESSEL_LOCKING(guarded_by(m_mutex)){};
  std::uint32_t m_randomState TESSEL_LOCKING(guarded_by(m_mutex)) = 20;
};

}  // namespace simulate
