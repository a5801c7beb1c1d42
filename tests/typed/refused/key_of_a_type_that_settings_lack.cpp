// SPDX-License-Identifier: Apache-2.0
// says: a key's type is bool, int, unsigned int, std::int64_t, std::uint64_t, float, double, std::string, a std::chrono::duration with an integer count, or an enum that has a kalStore::ConfigEnum
#include "Use.h"

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<short> key{KAL_CONFIG_GROUP_VIDEO, "A", short{1}};
#else
  [[maybe_unused]] constexpr ConfigKey<int> key{KAL_CONFIG_GROUP_VIDEO, "A", 1};
#endif
}
