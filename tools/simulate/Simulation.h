// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

#include "SettingsDocument.h"
#include "simulate/Call.h"
#include "simulate/Recorder.h"

namespace simulate {

struct SimulationPlan {
  double seconds = 5;
  unsigned calls = 2;
  unsigned listeners = 0;  ///< More components in each call.
  std::vector<SettingsDocument> documents;
};

/// Calls of a media engine, on the real library and with simulated links.
///
/// Threads: one owner, whose thread is the media clock while Run() runs.
class Simulation {
 public:
  /// The plan must outlive it.
  explicit Simulation(const SimulationPlan& plan) : m_plan(plan) {}

  /// For as long as planned, or until `isInterrupted`. The first document is applied at the start; the others
  /// arrive during the run, evenly spread. A machine that is too busy takes longer, so that every document
  /// arrives and every component works for a while. Once.
  void Run(const std::atomic<bool>& isInterrupted);

  // What came of it.

  double ElapsedSeconds() const { return m_elapsedSeconds; }
  std::size_t ComponentCount() const;
  const Recorder& Records() const { return m_recorder; }
  const std::deque<Call>& Calls() const { return m_calls; }
  /// Deliveries that were expected and have not arrived.
  std::size_t LostDeliveries() const;
  /// Whether each subscriber was notified of every change once, and the statistics have every frame once.
  bool IsSound() const;

 private:
  bool isOver() const;
  double share() const;

  const SimulationPlan& m_plan;
  Recorder m_recorder;
  std::deque<Call> m_calls;
  std::size_t m_nextDocument = 1;  // The first one is applied before the calls start.
  double m_elapsedSeconds = 0;
};

}  // namespace simulate
