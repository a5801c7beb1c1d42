// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace simulation {

/// Runs the plans of these seeds, the last one included, until one fails; prints which, and why. Returns
/// whether none did.
bool RunSeeds(std::uint64_t first, std::uint64_t last);

/// Runs one, and prints what its threads do, and when it fails a smaller plan that does. Returns whether
/// nothing is wrong.
bool RunSeed(std::uint64_t seed);

}  // namespace simulation
