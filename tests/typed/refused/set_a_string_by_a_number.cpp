// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kDevice.Set(settings, 1);
#else
  kDevice.Set(settings, "1");
#endif
}
