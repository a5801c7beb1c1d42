// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kDtx.Set(settings, 1);
#else
  kDtx.Set(settings, true);
#endif
}
