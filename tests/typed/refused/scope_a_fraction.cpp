// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  const ScopedConfig scope(settings, kMaxFps, 15.0);
#else
  const ScopedConfig scope(settings, kMaxFps, 15);
#endif
}
