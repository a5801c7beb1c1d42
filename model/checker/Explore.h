// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "checker/Choices.h"

namespace model {

/// What several threads do, to be tried under many schedules: a function that starts the threads, waits for
/// them, and checks what they have done. It runs again and again, each time with the program's variables as
/// they were at first.
struct Scenario {
  const char* name;
  void (*run)();
  bool reusesMemory = false;  ///< freed memory is used again at once, rather than never
};

/// What an exploration found.
struct Outcome {
  std::string failure;         ///< empty: nothing
  std::string schedule;        ///< of the failure
  std::uint64_t searched = 0;  ///< the schedules tried in order
  std::uint64_t random = 0;    ///< and at random
  int preemptions = -1;        ///< every schedule with so many at most was tried
};

/// Tries schedules until one fails. First in order: all without a preemption, all with one at most, and so on
/// until `limits`; then at random. Ends after `seconds`; a search that is in progress then counts as random.
/// Without a limit of time, after the search.
Outcome Explore(const Scenario& scenario, Limits limits, double seconds);

/// Runs one schedule and returns what it did, as text.
std::string Replay(const Scenario& scenario, std::string_view schedule);

/// Of a scenario: the execution fails unless it holds.
void Check(bool holds, const char* what);

}  // namespace model
