// SPDX-License-Identifier: Apache-2.0
#include "store/FeatureToggleKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace kalStore::internal {
namespace {

constexpr const char* kKeys[] = {
#define KAL_FT(id, name, key, kind, meaning) key,
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
};

constexpr std::size_t kIds[] = {
#define KAL_FT(id, name, key, kind, meaning) id,
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
};

constexpr bool IdsCountUp() {
  for (std::size_t i = 0; i < std::size(kIds); ++i) {
    if (kIds[i] != i) return false;
  }
  return true;
}

constexpr bool KeysAreDistinct() {
  std::array<std::string_view, std::size(kKeys)> sorted;
  std::copy(std::begin(kKeys), std::end(kKeys), sorted.begin());
  std::sort(sorted.begin(), sorted.end());
  return std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end();
}

static_assert(std::size(kKeys) == KAL_FT_Unknow + 1, "one key for each id");
static_assert(IdsCountUp(), "the index of a key is its id");
static_assert(KeysAreDistinct(), "no two toggles share a value");

}  // namespace

const char* FeatureToggleKey(KalFeatureToggleID id) {
  const auto index = static_cast<std::uint32_t>(id);
  return index < std::size(kKeys) ? kKeys[index] : nullptr;
}

}  // namespace kalStore::internal
