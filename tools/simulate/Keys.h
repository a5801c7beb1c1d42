// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/ConfigKey.h"
#include "tessel/KalFeatureToggleID.h"

/// The settings that the simulated engine works by. What documents set bears the names of the example
/// documents.
namespace simulate {

using kalStore::ConfigKey;

// A document may set any number: what the components work with at most.
inline constexpr int kMostBitrate = 100000000;
inline constexpr int kMostFps = 240;
inline constexpr int kMostDelayMs = 10000;

// Set by documents.
inline constexpr ConfigKey<int> kAudioBitrate{kalStore::KAL_CONFIG_GROUP_AUDIO, "Bitrate", 32000};
inline constexpr ConfigKey<int> kAudioMinBitrate{kalStore::KAL_CONFIG_GROUP_AUDIO, "MinBitrate", 12000};
inline constexpr ConfigKey<int> kAudioFrameMs{kalStore::KAL_CONFIG_GROUP_AUDIO, "FrameMs", 20};
inline constexpr ConfigKey<int> kJitterMinDelayMs{kalStore::KAL_CONFIG_GROUP_AUDIO, "JitterMinDelayMs", 20};
inline constexpr ConfigKey<int> kJitterMaxDelayMs{kalStore::KAL_CONFIG_GROUP_AUDIO, "JitterMaxDelayMs", 300};
inline constexpr ConfigKey<int> kVideoMaxWidth{kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxWidth", 1280};
inline constexpr ConfigKey<int> kVideoMaxHeight{kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxHeight", 720};
inline constexpr ConfigKey<int> kVideoMaxFps{kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
inline constexpr ConfigKey<int> kVideoMinFps{kalStore::KAL_CONFIG_GROUP_VIDEO, "MinFps", 7};
inline constexpr ConfigKey<int> kVideoMaxBitrate{kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxBitrate", 2500000};
inline constexpr ConfigKey<int> kVideoMinBitrate{kalStore::KAL_CONFIG_GROUP_VIDEO, "MinBitrate", 80000};
inline constexpr ConfigKey<int> kVideoLayers{kalStore::KAL_CONFIG_GROUP_VIDEO, "Layers", 3};
inline constexpr ConfigKey<bool> kHardwareEncode{kalStore::KAL_CONFIG_GROUP_VIDEO, "HardwareEncode", true};
inline constexpr ConfigKey<int> kStartBandwidth{kalStore::KAL_CONFIG_GROUP_TRANSMISSION, "StartBandwidth",
                                                800000};
inline constexpr ConfigKey<int> kMaxBandwidth{kalStore::KAL_CONFIG_GROUP_TRANSMISSION, "MaxBandwidth",
                                              4000000};
inline constexpr ConfigKey<int> kMinBandwidth{kalStore::KAL_CONFIG_GROUP_TRANSMISSION, "MinBandwidth", 50000};

// Set by the bandwidth controller; the first two by documents as well.
inline constexpr ConfigKey<bool> kAudioFec{kalStore::KAL_CONFIG_GROUP_AUDIO, "EnableFec", false};
inline constexpr ConfigKey<int> kExpectedLoss{kalStore::KAL_CONFIG_GROUP_AUDIO, "ExpectedLossPercent", 0};
inline constexpr ConfigKey<int> kAudioTarget{kalStore::KAL_CONFIG_GROUP_AUDIO, "TargetBitrate", 32000};
inline constexpr ConfigKey<int> kVideoTarget{kalStore::KAL_CONFIG_GROUP_VIDEO, "TargetBitrate", 600000};
inline constexpr ConfigKey<int> kTargetFps{kalStore::KAL_CONFIG_GROUP_VIDEO, "TargetFps", 30};
inline constexpr ConfigKey<int> kActiveLayers{kalStore::KAL_CONFIG_GROUP_VIDEO, "ActiveLayers", 1};
inline constexpr ConfigKey<int> kTargetBandwidth{kalStore::KAL_CONFIG_GROUP_TRANSMISSION, "TargetBandwidth",
                                                 800000};
inline constexpr ConfigKey<bool> kRetransmissionFec{kalStore::KAL_CONFIG_GROUP_FEATURE,
                                                    "EnableFECForRetransmission", false};

// Set by the jitter buffer.
inline constexpr ConfigKey<int> kJitterTargetMs{kalStore::KAL_CONFIG_GROUP_AUDIO, "JitterTargetDelayMs", 60};

// Bound by the jitter buffer: computed when it is read.
inline constexpr ConfigKey<double> kPlayoutDelayMs{kalStore::KAL_CONFIG_GROUP_AUDIO, "PlayoutDelayMs", 60.0};

}  // namespace simulate
