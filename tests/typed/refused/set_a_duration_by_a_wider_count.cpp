// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kShortTimeout.Set(settings, std::chrono::milliseconds(40));
#else
  kShortTimeout.Set(settings, std::chrono::duration<int, std::milli>(40));
#endif
}
