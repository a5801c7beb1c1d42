// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <utility>

#include "tessel/typed.h"

// What the files beside this one use: each compiles as it is, and does not compile with REFUSED defined.

using namespace kalStore;

enum class Codecs { kNone, kH264, kVp8 };

template <>
struct kalStore::ConfigEnum<Codecs> {
  static constexpr ConfigEnumName<Codecs> kNames[] = {{Codecs::kH264, "h264"}, {Codecs::kVp8, "vp8"}};
};

// A component's own: the library has no such short names.
class Audio;
class Video;
extern Audio* componentsAudio;
extern Video* componentsVideo;

extern KalConfigHelper settings;
extern Subscription subscription;
extern CallStore call;
extern StatsRef<AudioStats> audio;

inline constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
inline constexpr ConfigKey<bool> kDtx{KAL_CONFIG_GROUP_AUDIO, "Dtx", true};
inline constexpr ConfigKey<std::string> kDevice{KAL_CONFIG_GROUP_AUDIO, "Device", "default"};
inline constexpr ConfigKey<float> kGain{KAL_CONFIG_GROUP_AUDIO, "Gain", 0.1};
inline constexpr ConfigKey<Codecs> kCodec{KAL_CONFIG_GROUP_VIDEO, "Codec", Codecs::kH264};
inline constexpr ConfigKey<std::chrono::milliseconds> kTimeout{KAL_CONFIG_GROUP_COMMON, "Timeout",
                                                               std::chrono::seconds(3)};
inline constexpr ConfigKey<std::chrono::duration<int, std::milli>> kShortTimeout{
    KAL_CONFIG_GROUP_COMMON, "ShortTimeout", std::chrono::duration<int, std::milli>(3)};
