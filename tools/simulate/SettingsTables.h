// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "simulate/Simulation.h"

namespace simulate {

/// Writes the settings at the end, by group, with what changed each last; of the calls numbered up to
/// `shownCalls`, and once where all of these agree.
void WriteSettingsTable(std::ostream& out, const Simulation& simulation, std::size_t shownCalls);

/// Writes the feature toggles of the first call that are not as they are by default: off, or with a value.
void WriteTogglesTable(std::ostream& out, const Simulation& simulation);

}  // namespace simulate
