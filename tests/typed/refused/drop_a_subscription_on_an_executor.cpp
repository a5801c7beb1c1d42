// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  Subscription(
      settings, KAL_CONFIG_GROUP_AUDIO, "A", [](const KalConfigEvent&) {}, [](std::function<void()>) {});
#else
  const Subscription s(
      settings, KAL_CONFIG_GROUP_AUDIO, "A", [](const KalConfigEvent&) {}, [](std::function<void()>) {});
#endif
}
