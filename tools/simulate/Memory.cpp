// SPDX-License-Identifier: Apache-2.0
#include "simulate/Memory.h"

#include <fstream>
#include <limits>
#include <string>

namespace simulate {

Memory MemoryInUse() {
  Memory memory;
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name;) {
    if (name == "VmRSS:") status >> memory.residentKiB;
    if (name == "VmHWM:") status >> memory.peakKiB;
    status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return memory;
}

}  // namespace simulate
