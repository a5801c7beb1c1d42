// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "tessel/typed.h"

// What the files beside this one use: each compiles as it is, and does not compile with REFUSED defined.

using namespace kalStore;

extern KalConfigHelper settings;
extern Subscription subscription;
extern CallStore call;
extern StatsRef<Audio> audio;

inline constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
inline constexpr ConfigKey<bool> kDtx{KAL_CONFIG_GROUP_AUDIO, "Dtx", true};
inline constexpr ConfigKey<std::string> kDevice{KAL_CONFIG_GROUP_AUDIO, "Device", "default"};
