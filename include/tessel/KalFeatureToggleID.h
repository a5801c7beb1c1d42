// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace kalStore {

/// The feature toggles: values of group "Feature" that have a number for a name. KalFeatureToggles.def is
/// their catalogue: id, key, kind of value and meaning of each, for example
/// KAL_FT(5, EnableMusicDetection, "EnableMusicDetection", bool, "Detect music and ...")
/// for KAL_FT_EnableMusicDetection = 5. A toggle that is not set counts as on.
///
/// 0 to 351; the last, KAL_FT_Unknow, ends the table; its key is "KAL_FT_Unknow". Compared as unsigned.
enum KalFeatureToggleID : std::int32_t {
#define KAL_FT(id, name, key, kind, meaning) KAL_FT_##name = (id),
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
};

}  // namespace kalStore
