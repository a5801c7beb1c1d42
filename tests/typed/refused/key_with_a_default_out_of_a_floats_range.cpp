// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<float> key{KAL_CONFIG_GROUP_VIDEO, "A", 1e39};
#else
  [[maybe_unused]] constexpr ConfigKey<float> key{KAL_CONFIG_GROUP_VIDEO, "A", 1e38};
#endif
}
