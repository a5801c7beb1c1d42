// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Set(settings, 15L);
#else
  kMaxFps.Set(settings, 15);
#endif
}
