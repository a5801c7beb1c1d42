// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Subscribe(settings, [](const ConfigReading<int>&) {});
#else
  const auto s = kMaxFps.Subscribe(settings, [](const ConfigReading<int>&) {});
#endif
}
