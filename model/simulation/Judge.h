// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "simulation/History.h"

namespace simulation {

/// What is wrong with a run; empty: nothing. `recording` is the text of its recording.
std::string Judge(const Plan& plan, const History& history, const std::string& recording);

}  // namespace simulation
