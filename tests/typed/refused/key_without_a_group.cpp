// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<int> key{KAL_CONFIG_GROUP_LAST, "A", 1};
#else
  [[maybe_unused]] constexpr ConfigKey<int> key{KAL_CONFIG_GROUP_DEFAULT, "A", 1};
#endif
}
