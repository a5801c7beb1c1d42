// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  LiveConfig(settings, kMaxFps);
#else
  const LiveConfig maxFps(settings, kMaxFps);
#endif
}
