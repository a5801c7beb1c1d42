// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kTimeout.Set(settings, 40);
#else
  kTimeout.Set(settings, std::chrono::milliseconds(40));
#endif
}
