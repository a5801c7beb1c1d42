// SPDX-License-Identifier: Apache-2.0
#include "checker/Explore.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>

#include "checker/Checker.h"
#include "checker/Crash.h"
#include "checker/Steps.h"

namespace model {

namespace {

// So many schedules at random show most of the places where threads meet.
constexpr std::uint64_t kLearning = 200;
// Of the time, what a search may take.
constexpr double kSearchShare = 0.7;

double Seconds() {
  timespec now{};
  syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

class Exploration {
 public:
  Exploration(const Scenario& scenario, double seconds)
      : m_checker(scenario), m_seconds(seconds), m_begin(Seconds()) {}

  Outcome Run(Limits limits) {
    while (m_outcome.random < kLearning && tryRandom()) {
    }
    for (int preemptions = 0; preemptions <= limits.preemptions && search({preemptions, limits.oddities});
         ++preemptions) {
      m_outcome.preemptions = preemptions;
    }
    while (m_seconds > 0 && passed() < m_seconds && tryRandom()) {
    }
    return m_outcome;
  }

 private:
  double passed() const { return Seconds() - m_begin; }

  // Whether nothing is wrong.
  bool run() {
    if (!m_outcome.failure.empty()) return false;
    m_outcome.failure = m_checker.Run();
    if (m_outcome.failure.empty()) return true;
    m_outcome.schedule = m_checker.Choice().Schedule();
    return false;
  }

  bool tryRandom() {
    m_checker.Choice().Random(++m_outcome.random);
    return run();
  }

  // Whether it came to its end.
  bool search(Limits limits) {
    m_checker.Choice().Search(limits);
    for (;;) {
      if (m_seconds > 0 && passed() > m_seconds * kSearchShare) return false;
      const std::size_t places = m_checker.Shared().Size();
      ++m_outcome.searched;
      if (!run()) return false;
      if (m_checker.Shared().Size() != places) {
        m_checker.Choice().Search(limits);
      } else if (!m_checker.Choice().HasNext()) {
        return true;
      }
    }
  }

  Checker m_checker;
  const double m_seconds;
  const double m_begin;
  Outcome m_outcome;
};

}  // namespace

Outcome Explore(const Scenario& scenario, Limits limits, double seconds) {
  const Crash crash;
  return Exploration(scenario, seconds).Run(limits);
}

std::string Replay(const Scenario& scenario, std::string_view schedule) {
  const Crash crash;
  Checker checker(scenario);
  checker.Choice().Replay(schedule);
  const std::string failure = checker.Run();
  return Describe(checker.Steps()) + (failure.empty() ? "nothing is wrong" : failure) + '\n';
}

void Check(bool holds, const char* what) {
  if (holds) return;
  Checker* const checker = ActiveChecker();
  const Operation operation(*checker, __builtin_return_address(0), __builtin_frame_address(0));
  checker->Fail(what);
}

}  // namespace model
