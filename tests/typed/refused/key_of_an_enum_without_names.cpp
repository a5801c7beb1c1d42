// SPDX-License-Identifier: Apache-2.0
// says: a key's type is bool, int, unsigned int, std::int64_t, std::uint64_t, float, double, std::string, a std::chrono::duration with an integer count, or an enum that has a kalStore::ConfigEnum
#include "Use.h"

enum class Codec { kH264, kVp8 };

void Use() {
#ifdef REFUSED
  [[maybe_unused]] constexpr ConfigKey<Codec> key{KAL_CONFIG_GROUP_VIDEO, "A", Codec::kVp8};
#else
  [[maybe_unused]] constexpr ConfigKey<Codecs> key{KAL_CONFIG_GROUP_VIDEO, "A", Codecs::kVp8};
#endif
}
