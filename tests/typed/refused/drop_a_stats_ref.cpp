// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  StatsRef<AudioStats>(7);
#else
  const StatsRef<AudioStats> stats(7);
#endif
}
