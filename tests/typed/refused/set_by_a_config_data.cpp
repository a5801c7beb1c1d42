// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Set(settings, ConfigData(15));
#else
  settings.SetKalConfig("MaxFps", ConfigData(15));
#endif
}
