// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<Codecs> key{KAL_CONFIG_GROUP_VIDEO, "A", Codecs::kNone};
#else
  [[maybe_unused]] constexpr ConfigKey<Codecs> key{KAL_CONFIG_GROUP_VIDEO, "A", Codecs::kVp8};
#endif
}
