// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace simulate {

/// What the process takes of the machine's memory, in KiB; 0 where the system does not say.
struct Memory {
  std::uint64_t residentKiB = 0;
  std::uint64_t peakKiB = 0;
};

Memory MemoryInUse();

}  // namespace simulate
