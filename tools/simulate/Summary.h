// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "simulate/Simulation.h"

namespace simulate {

/// Writes what came of a run, for people.
void PrintSummary(std::ostream& out, const Simulation& simulation);

/// Writes the same as an object of JSON, on one line, and each setting that somebody subscribes to.
void PrintSummaryAsJson(std::ostream& out, const Simulation& simulation);

}  // namespace simulate
