// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  std::string device;
  device = settings.GetKalConfig("Device", KAL_CONFIG_GROUP_AUDIO);
#else
  std::string device;
  device = settings.GetKalConfig("Device", KAL_CONFIG_GROUP_AUDIO).ToString();
#endif
}
