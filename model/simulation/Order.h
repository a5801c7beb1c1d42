// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "simulation/History.h"

namespace simulation {

/// What the model's callbacks received for one action of an order; thread and time do not matter to it.
struct Notified {
  const Done* by;
  std::vector<fuzz::Notification> notifications;
};

/// The model's tag of a subscriber of everything.
constexpr int kObserver = -1;

/// Looks for an order of the values' operations in which a store that does one at a time gives what each of
/// them gave, and delivers to each subscriber that is there all the time what it received. An operation that
/// ended before another one began comes before it. One that ran out of memory may have done its work or not.
///
/// `isRight` is asked about each such order, with what the model notified, operation by operation, until it
/// says yes. Returns whether it did.
bool FindOrder(const Plan& plan, const History& history,
               const std::function<bool(const std::vector<Notified>&)>& isRight);

}  // namespace simulation
