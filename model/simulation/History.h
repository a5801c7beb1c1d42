// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulation/Plan.h"

namespace simulation {

/// When something happened, in the order of the execution.
using Moment = std::uint32_t;
inline constexpr Moment kNever = 0xFFFFFFFF;

/// An action, and what came of it.
struct Done {
  enum class Outcome : std::uint8_t { kReturned, kCallbackThrew, kOutOfMemory };

  int thread;
  Action action;
  Moment begin;
  Moment end = kNever;
  Outcome outcome = Outcome::kReturned;
  std::int64_t result = 0;
  fuzz::Text value{};  // What it read.
  int asked = -1;      // The binding that answered.
  int after = -1;      // The one that the same thread's operation did before.
};

/// What a callback received.
struct Delivery {
  Moment at;
  fuzz::Notification notification;
};

/// An event of the run thread that fired.
struct Fired {
  Moment at;
  int event;
};

/// A change that the journal has.
struct Journalled {
  enum class Kind : std::uint8_t { kSet, kTransientSet, kRemoved, kGroupRemoved };
  Kind kind;
  std::string name;
  fuzz::Text oldValue;
  fuzz::Text newValue;
};

/// What happened in one run: written by its threads, aside, and judged afterwards.
struct History {
  Moment now = 0;
  std::vector<Done> done;
  std::vector<Delivery> deliveries;
  std::vector<Fired> fired;
  std::vector<Journalled> journal;
  bool isJournalWhole = false;
  std::string recording;        // The file.
  fuzz::Text last[kNameCount];  // What is stored at the end.
  int live = 0;                 // What the live value has at the end, of the first name.
  std::uint32_t callsLeft = 0;
  std::size_t statisticsLeft = 0;

  Moment Tick() { return ++now; }
};

/// Whether an action ran out of memory. What a callback threw before hides that.
inline bool MayLackMemory(const Plan& plan, const Done& done) {
  return done.outcome == Done::Outcome::kOutOfMemory ||
         (done.outcome == Done::Outcome::kCallbackThrew && plan.refusals.allocations.count > 0);
}

std::string Describe(const History& history);

}  // namespace simulation
