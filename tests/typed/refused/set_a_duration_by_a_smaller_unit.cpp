// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kTimeout.Set(settings, std::chrono::microseconds(40));
#else
  kTimeout.Set(settings, std::chrono::seconds(40));
#endif
}
