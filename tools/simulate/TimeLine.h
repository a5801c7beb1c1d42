// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "simulate/Simulation.h"

namespace simulate {

/// Writes the time line of a run: when documents arrived, when components changed each setting, and when
/// changes were delivered, by way. A lane each, of all calls together.
void WriteTimeLine(std::ostream& out, const Simulation& simulation);

}  // namespace simulate
