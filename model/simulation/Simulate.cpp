// SPDX-License-Identifier: Apache-2.0
#include "simulation/Simulate.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "checker/Checker.h"
#include "checker/Crash.h"
#include "checker/Steps.h"
#include "simulation/Judge.h"
#include "simulation/World.h"

namespace simulation {

namespace {

// So many runs show most of the places where threads meet. Later ones add nothing: each depends on its seed
// alone.
constexpr std::uint64_t kLearning = 300;
// How often a smaller plan is tried.
constexpr std::uint64_t kSchedules = 100;

// The recording's file, of this process.
class File {
 public:
  File() {
    const int descriptor = ::mkstemp(m_path.data());
    if (descriptor >= 0) ::close(descriptor);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { std::remove(m_path.c_str()); }

  const std::string& Path() const { return m_path; }
  std::string Text() const {
    std::ifstream file(m_path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string m_path = (std::filesystem::temp_directory_path() / "tessel-simulation-XXXXXX").string();
};

// What an execution runs: reached from the program's variables, which go back to what they were before each.
struct Case* g_case = nullptr;

struct Case {
  Case() { g_case = this; }
  Case(const Case&) = delete;
  Case& operator=(const Case&) = delete;

  Plan plan;
  History history;
  const File file;
};

void RunCase() {
  World world(g_case->plan, g_case->history, g_case->file.Path());
  world.Run();
}

class Simulation {
 public:
  Simulation() {
    for (std::uint64_t seed = 0; seed < kLearning; ++seed) {
      for (model::Checker* checker : {&m_checker, &m_reusing}) {
        checker->Choice().Random(seed);
        m_case.plan = MakePlan(seed);
        m_case.history = {};
        checker->Run();
      }
    }
    m_checker.StopLearning();
    m_reusing.StopLearning();
  }

  // What is wrong with a plan under the schedule of a seed.
  std::string Run(const Plan& plan, std::uint64_t seed) {
    checkerOf(plan).Choice().Random(seed);
    return run(plan);
  }
  // The same again, with its steps.
  std::string Replay(const Plan& plan) {
    model::Checker& checker = checkerOf(plan);
    const std::string schedule = checker.Choice().Schedule();
    checker.Choice().Replay(schedule);
    const std::string failure = run(plan);
    return model::Describe(checker.Steps()) + Describe(m_case.history) +
           (failure.empty() ? "nothing is wrong" : failure) + '\n';
  }

 private:
  model::Checker& checkerOf(const Plan& plan) { return plan.reusesMemory ? m_reusing : m_checker; }

  std::string run(const Plan& plan) {
    m_case.plan = plan;
    m_case.history = {};
    const std::string failure = checkerOf(plan).Run();
    if (!failure.empty()) return failure;
    return Judge(plan, m_case.history, plan.isRecorded ? m_case.file.Text() : std::string());
  }

  const model::Crash m_crash;
  Case m_case;
  // Both begin with the same variables of the program, the case's place among them.
  model::Checker m_checker{{"", &RunCase, false}};
  model::Checker m_reusing{{"", &RunCase, true}};
};

// Leaves out actions, one after the other, as long as some schedule fails. Returns the schedule's seed.
std::uint64_t MakeSmaller(Simulation& simulation, Plan& plan, std::uint64_t seed) {
  for (std::size_t thread = 0; thread < plan.threads.size(); ++thread) {
    for (std::size_t at = 0; at < plan.threads[thread].size();) {
      Plan smaller = plan;
      smaller.threads[thread].erase(smaller.threads[thread].begin() + static_cast<std::ptrdiff_t>(at));
      std::uint64_t found = seed;
      while (found < seed + kSchedules && simulation.Run(smaller, found).empty()) ++found;
      if (found == seed + kSchedules) {
        ++at;
      } else {
        plan = smaller;
        seed = found;
      }
    }
  }
  return seed;
}

}  // namespace

bool RunSeeds(std::uint64_t first, std::uint64_t last) {
  Simulation simulation;
  for (std::uint64_t seed = first; seed <= last; ++seed) {
    const std::string failure = simulation.Run(MakePlan(seed), seed);
    if (failure.empty()) continue;
    std::printf("FAILED: seed %llu: %s\nsee it again: ./dev model --seed %llu\n",
                static_cast<unsigned long long>(seed), failure.c_str(),
                static_cast<unsigned long long>(seed));
    return false;
  }
  std::printf("model: simulations %llu to %llu, none failed\n", static_cast<unsigned long long>(first),
              static_cast<unsigned long long>(last));
  return true;
}

bool RunSeed(std::uint64_t seed) {
  Simulation simulation;
  Plan plan = MakePlan(seed);
  const std::string failure = simulation.Run(plan, seed);
  std::printf("%s\n", Describe(plan).c_str());
  if (!failure.empty()) {
    std::printf("FAILED: %s\n\nA smaller one:\n", failure.c_str());
    seed = MakeSmaller(simulation, plan, seed);
    std::printf("%s\n", Describe(plan).c_str());
  }
  simulation.Run(plan, seed);
  std::printf("%s", simulation.Replay(plan).c_str());
  return failure.empty();
}

}  // namespace simulation
