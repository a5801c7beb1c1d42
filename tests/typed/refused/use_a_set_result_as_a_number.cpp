// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] const int result = kMaxFps.Set(settings, 15);
#else
  [[maybe_unused]] const int result = kMaxFps.Set(settings, 15).Code();
#endif
}
