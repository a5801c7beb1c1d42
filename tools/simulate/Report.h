// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "simulate/Simulation.h"

namespace simulate {

/// The report of a run: one HTML page that refers to nothing outside and needs no script. For the screen,
/// light and dark, wide and narrow, and for paper.
std::string Report(const Simulation& simulation);

}  // namespace simulate
