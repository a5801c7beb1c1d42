// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  if (kMaxFps.Set(settings, 15) == 0) return;
#else
  if (kMaxFps.Set(settings, 15).Code() == kResultOk) return;
#endif
}
