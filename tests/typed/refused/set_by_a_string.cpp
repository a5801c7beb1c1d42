// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Set(settings, "15");
#else
  kDevice.Set(settings, "15");
#endif
}
