// SPDX-License-Identifier: Apache-2.0
// Tries the schedules of all scenarios, or of those named, and prints a line for each. Or runs simulations.
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "scenarios/Registry.h"
#include "simulation/Simulate.h"
#include "util/util_trace.h"

namespace {

using model::Scenario;

struct Options {
  double seconds = 0;
  model::Limits limits{.preemptions = 4, .oddities = 1};
  std::string schedule;
  std::pair<std::uint64_t, std::uint64_t> seeds;
  std::vector<std::string> names;
};

std::vector<Scenario> ChosenScenarios(const std::vector<std::string>& names) {
  std::vector<Scenario> chosen;
  for (const model::Registered* at = model::Registered::Latest(); at != nullptr; at = at->Next()) {
    const bool isChosen =
        names.empty() || std::find(names.begin(), names.end(), at->Get().name) != names.end();
    if (isChosen) chosen.push_back(at->Get());
  }
  std::sort(chosen.begin(), chosen.end(),
            [](const Scenario& left, const Scenario& right) { return std::string(left.name) < right.name; });
  return chosen;
}

// In a process of its own. Returns whether nothing is wrong.
bool RunScenario(const Scenario& scenario, model::Limits limits, double seconds) {
  const model::Outcome outcome = model::Explore(scenario, limits, seconds);
  if (outcome.failure.empty()) {
    std::printf("%-44s %9llu schedules, all with up to %d preemptions; %9llu at random\n", scenario.name,
                static_cast<unsigned long long>(outcome.searched), outcome.preemptions,
                static_cast<unsigned long long>(outcome.random));
    return true;
  }
  std::printf("%s\nFAILED: %s: %s\nsee it again: ./dev model --replay '%s' %s\n",
              model::Replay(scenario, outcome.schedule).c_str(), scenario.name, outcome.failure.c_str(),
              outcome.schedule.c_str(), scenario.name);
  return false;
}

// Some scenarios at a time, each in a child process. Returns how many have failed.
int RunAll(const std::vector<Scenario>& scenarios, const Options& options) {
  const std::size_t jobs = std::max(1U, std::thread::hardware_concurrency());
  const double share = options.seconds * static_cast<double>(std::min(jobs, scenarios.size())) /
                       static_cast<double>(scenarios.size());
  std::size_t running = 0;
  int failed = 0;
  const auto wait = [&] {
    int status = 0;
    ::wait(&status);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failed;
    --running;
  };
  for (const Scenario& scenario : scenarios) {
    if (running == jobs) wait();
    std::fflush(stdout);
    if (fork() == 0) {
      const bool isGood = RunScenario(scenario, options.limits, share);
      std::fflush(stdout);
      _exit(isGood ? 0 : 1);
    }
    ++running;
  }
  while (running > 0) wait();
  return failed;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Runs the libraries' threads under every schedule.");
  app.add_option("--seconds", options.seconds, "how long, in all; 0: until every schedule was tried");
  app.add_option("--preemptions", options.limits.preemptions,
                 "how often a thread gives way that could go on, at most");
  app.add_option("--oddities", options.limits.oddities,
                 "how often a load sees an older store, at most, or the like");
  CLI::Option* const replay =
      app.add_option("--replay", options.schedule, "print one schedule of a scenario");
  CLI::Option* const seed = app.add_option("--seed", options.seeds.first, "run one simulation and print it");
  CLI::Option* const seeds =
      app.add_option("--seeds", options.seeds, "run simulations, from one seed to another");
  app.add_option("scenario", options.names, "names; all by default");
  CLI11_PARSE(app, argc, argv);

  set_external_trace_mask(-1);
  if (seed->count() + seeds->count() > 0) {
    const bool isGood = seed->count() > 0 ? simulation::RunSeed(options.seeds.first)
                                          : simulation::RunSeeds(options.seeds.first, options.seeds.second);
    std::fflush(stdout);
    _exit(isGood ? 0 : 1);
  }
  const std::vector<Scenario> scenarios = ChosenScenarios(options.names);
  if (scenarios.empty()) {
    std::fputs("no such scenario\n", stderr);
    return 2;
  }
  if (replay->count() > 0) {
    std::fputs(model::Replay(scenarios.front(), options.schedule).c_str(), stdout);
    std::fflush(stdout);
    _exit(0);
  }
  const int failed = RunAll(scenarios, options);
  std::printf("model: %zu scenarios, %d failed\n", scenarios.size(), failed);
  std::fflush(stdout);
  // Static objects are the scenarios': their destructors have nothing to do here.
  _exit(failed == 0 ? 0 : 1);
}
