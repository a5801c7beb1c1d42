// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<bool> key(KAL_CONFIG_GROUP_AUDIO, "A", 1.0);
#else
  [[maybe_unused]] constexpr ConfigKey<bool> key(KAL_CONFIG_GROUP_AUDIO, "A", true);
#endif
}
