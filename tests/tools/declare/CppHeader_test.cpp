// SPDX-License-Identifier: Apache-2.0
// The first include: the header needs no other.
#include "declared_header_test_settings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"

using namespace kalStore;

// A key's type, and what it says.
#define EXPECT_KEY(key, type, group, name, value)                      \
  static_assert(std::is_same_v<decltype(key), const ConfigKey<type>>); \
  EXPECT_EQ((key).Group(), KAL_CONFIG_GROUP_##group);                  \
  EXPECT_STREQ((key).Name(), name);                                    \
  EXPECT_EQ((key).Default(), value)

TEST(DeclaredHeader, HasAKeyForEachSetting) {
  using namespace odd::detail;
  EXPECT_KEY(kCommonFlag, bool, COMMON, "Flag", true);
  EXPECT_KEY(kFeatureLeastInt, int, FEATURE, "least-int", std::numeric_limits<int>::min());
  EXPECT_KEY(kMetricsMost, unsigned int, METRICS, "Most", 4294967295U);
  EXPECT_KEY(kAudioLeast64, std::int64_t, AUDIO, "Least64", std::numeric_limits<std::int64_t>::min());
  EXPECT_KEY(kAudioSlideMost64, std::int64_t, AUDIO_SLIDE, "Most64",
             std::numeric_limits<std::int64_t>::max());
  EXPECT_KEY(kVideoShare, double, VIDEO, "Share", 1e300);
  EXPECT_KEY(kVideoSlideWhole, double, VIDEO_SLIDE, "Whole", 3.0);
  EXPECT_KEY(kQuoted, std::string, APPLICATION, "quoted \"name\" \\ \?\?= \u00e4",
             "a\"b\\c\n\t\a1 \?\?/ \u00e4 /* */ %s");
  EXPECT_KEY(kGamestateCodec, GamestateCodec, GAMESTATE, "Codec", GamestateCodec::kLowLatency);
  EXPECT_KEY(kAudioSiNs, std::chrono::nanoseconds, AUDIO_SI, "Ns", std::chrono::nanoseconds::min());
  EXPECT_KEY(kTransmissionUs, std::chrono::microseconds, TRANSMISSION, "Us", std::chrono::microseconds(1));
  EXPECT_KEY(kTAOnlyMs, std::chrono::milliseconds, TA_ONLY, "Ms", std::chrono::milliseconds(40));
  EXPECT_KEY(kUnitTestS, std::chrono::seconds, UNIT_TEST, "S", std::chrono::seconds(2));
  EXPECT_KEY(kUnitTestMin, std::chrono::minutes, UNIT_TEST, "Min", std::chrono::minutes(3));
  EXPECT_KEY(kUnitTestH, std::chrono::hours, UNIT_TEST, "H", std::chrono::hours(4));
}

TEST(DeclaredHeader, StoresTheStringsOfItsEnums) {
  using odd::detail::GamestateCodec;
  KalConfigHelper settings(7);
  const std::pair<GamestateCodec, const char*> rows[] = {
      {GamestateCodec::kH264, "h264"}, {GamestateCodec::kLowLatency, "low-latency"},
      {GamestateCodec::k2k, "2k"},     {GamestateCodec::kAB, "a\"b\\"},
      {GamestateCodec::k1m, "[1m"},    {GamestateCodec::kDefault, "default"},
  };
  for (const auto& [value, name] : rows) {
    odd::detail::kGamestateCodec.Set(settings, value);
    EXPECT_EQ(settings.GetKalConfig("Codec", KAL_CONFIG_GROUP_GAMESTATE).ToString(), name);
    EXPECT_EQ(odd::detail::kGamestateCodec.Get(settings), value);
  }
  CleanUpKalConfig(7);
}

TEST(DeclaredHeader, HasTheNamespaceOfEachFile) {
  EXPECT_EQ(settings::kAudioBitrate.Default(), 32000);
  EXPECT_EQ(settings::kAudioCodec.Default(), settings::AudioCodec::kOpus);
}
