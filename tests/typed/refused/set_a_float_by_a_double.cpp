// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kGain.Set(settings, 0.5);
#else
  kGain.Set(settings, 0.5F);
#endif
}
