// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  const int fps = settings.GetKalConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO);
  static_cast<void>(fps);
#else
  const int fps = settings.GetKalConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO).ToInt();
  static_cast<void>(fps);
#endif
}
