// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <vector>

#include "simulate/Reporter.h"

namespace simulate {

/// Writes the plots of one call: bit rates, frame rate, packets, delays, as its statistics blocks say.
void WriteCallPlots(std::ostream& out, const std::vector<Sample>& samples, double seconds);

}  // namespace simulate
