// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Get(KalConfigHelper(7));
#else
  kMaxFps.Get(settings);
#endif
}
