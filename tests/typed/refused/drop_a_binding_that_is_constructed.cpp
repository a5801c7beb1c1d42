// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  Binding(settings, KAL_CONFIG_GROUP_AUDIO, "A", [](const KalConfigEvent&) { return ConfigData(1); });
#else
  const Binding b(settings, KAL_CONFIG_GROUP_AUDIO, "A", [](const KalConfigEvent&) { return ConfigData(1); });
#endif
}
