// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  LiveConfig<std::string> device(settings, kDevice);
#else
  LiveConfig<bool> device(settings, kDtx);
#endif
  device.Get();
}
