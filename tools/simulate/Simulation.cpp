// SPDX-License-Identifier: Apache-2.0
#include "simulate/Simulation.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace simulate {

namespace {

constexpr std::chrono::milliseconds kTick{10};
constexpr double kLongestCycle = 20;
// A run lasts longer than planned where the machine has not got through so many ticks, or half of those
// planned.
constexpr double kLeastTicks = 100;

}  // namespace

void Simulation::Run(const std::atomic<bool>& isInterrupted) {
  const std::vector<SettingsDocument>& documents = m_plan.documents;
  const double cycle = std::min(kLongestCycle, m_plan.seconds / 2);
  for (unsigned call = 0; call < m_plan.calls; ++call) {
    m_calls.emplace_back(call + 1, m_plan.listeners, m_recorder, std::make_unique<Link>(cycle, 0.37 * call),
                         documents.empty() ? nullptr : &documents.front());
  }

  while (!isInterrupted && !isOver()) {
    const auto end = std::chrono::steady_clock::now() + kTick;
    if (m_nextDocument < documents.size() &&
        share() * static_cast<double>(documents.size()) >= static_cast<double>(m_nextDocument)) {
      for (Call& call : m_calls) call.Receive(documents[m_nextDocument]);
      ++m_nextDocument;
    }
    for (Call& call : m_calls) call.Tick();
    std::this_thread::sleep_until(end);
  }
  for (Call& call : m_calls) call.Finish();
  m_elapsedSeconds = Seconds(m_recorder.Now());
}

// The part of the planned run that is over.
double Simulation::share() const {
  return Seconds(m_recorder.Now()) / m_plan.seconds;
}

bool Simulation::isOver() const {
  if (share() < 1 || m_nextDocument < m_plan.documents.size()) return false;
  const double planned = m_plan.seconds / std::chrono::duration<double>(kTick).count();
  const double least = std::min(kLeastTicks, planned / 2);
  return std::ranges::all_of(m_calls, [least](const Call& call) { return call.Ticks() >= least; });
}

std::size_t Simulation::ComponentCount() const {
  return m_calls.size() * (Call::kOwnComponents + m_plan.listeners);
}

std::size_t Simulation::LostDeliveries() const {
  std::size_t lost = 0;
  for (const Call& call : m_calls) lost += call.Books().Missing();
  return lost;
}

bool Simulation::IsSound() const {
  return LostDeliveries() == 0 && m_recorder.unexpectedDeliveries == 0 &&
         m_recorder.framesSent == m_recorder.framesReported;
}

}  // namespace simulate
