// SPDX-License-Identifier: Apache-2.0
// says: a LiveConfig is read without a lock: its type is one whose std::atomic is always lock-free, such as bool, a number, an enum or a duration; read a std::string by its ConfigKey
#include "Use.h"

void Use() {
#ifdef REFUSED
  LiveConfig<std::string> device(settings, kDevice);
#else
  LiveConfig<bool> device(settings, kDtx);
#endif
  device.Get();
}
