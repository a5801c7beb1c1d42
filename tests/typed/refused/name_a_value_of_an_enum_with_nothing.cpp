// SPDX-License-Identifier: Apache-2.0
// says: kNames has each value and each name once, and no empty name
#include "Use.h"

enum class Layer { kLow, kHigh };

template <>
struct kalStore::ConfigEnum<Layer> {
#ifdef REFUSED
  static constexpr ConfigEnumName<Layer> kNames[] = {{Layer::kLow, ""}, {Layer::kHigh, "high"}};
#else
  static constexpr ConfigEnumName<Layer> kNames[] = {{Layer::kLow, "low"}, {Layer::kHigh, "high"}};
#endif
};

void Use() {
  [[maybe_unused]] constexpr ConfigKey<Layer> key{KAL_CONFIG_GROUP_VIDEO, "A", Layer::kLow};
}
