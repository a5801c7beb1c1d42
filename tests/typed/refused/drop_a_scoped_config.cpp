// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  ScopedConfig(settings, kMaxFps, 15);
#else
  const ScopedConfig scope(settings, kMaxFps, 15);
#endif
}
