// SPDX-License-Identifier: Apache-2.0
#pragma once

// Included before every source that the checker runs.

#include <cstdint>

// The processor's counter is the checker's clock: an execution depends on nothing but its schedule.
extern "C" std::uint64_t ModelTicks();
#define __builtin_ia32_rdtsc ModelTicks  // NOLINT(bugprone-reserved-identifier)
