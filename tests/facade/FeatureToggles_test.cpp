// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "FacadeTest.h"
#include "tessel/post.h"

namespace kalStore {
namespace {

using FeatureTogglesTest = FacadeTest;

struct Row {
  std::uint32_t id;
  KalFeatureToggleID enumerator;
  std::string key;
  std::string kind;
  std::string meaning;
};

const std::vector<Row>& Catalogue() {
  static const std::vector<Row> rows = {
#define KAL_FT(id, name, key, kind, meaning) {id, KAL_FT_##name, key, #kind, meaning},
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
  };
  return rows;
}

TEST_F(FeatureTogglesTest, AreListedOnceEachWithContiguousIds) {
  std::set<std::string> keys;
  ASSERT_EQ(Catalogue().size(), 352U);
  for (std::uint32_t id = 0; id < 352; ++id) {
    const Row& row = Catalogue()[id];
    EXPECT_EQ(row.id, id);
    EXPECT_EQ(static_cast<std::uint32_t>(row.enumerator), id);
    EXPECT_FALSE(row.key.empty());
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
    EXPECT_TRUE(row.kind == "bool" || row.kind == "int" || row.kind == "double" || row.kind == "text")
        << row.kind;
    EXPECT_FALSE(row.meaning.empty()) << row.key;
    EXPECT_EQ(row.meaning.find('\n'), std::string::npos);
  }
}

TEST_F(FeatureTogglesTest, KeepTheKeysThatOthersRelyOn) {
  const std::pair<std::uint32_t, const char*> fixed[] = {
      {0, "ConnectionTimeEnhancement"},
      {3, "media-packet-loss-recording-audio-session"},
      {4, "media-packet-loss-recording-video-session"},
      {5, "EnableMusicDetection"},
      {6, "EnablClipVolumeCtl"},
      {7, "EnableInherentLossProbing"},
      {8, "VideoStrategyEnableFPSAdjust"},
      {9, "VideoStrategyEnableROIRC"},
      {16, "EnableVbgHighFps"},
      {17, "EnableRelitDetector"},
      {18, "EnablePortraitGpu"},
      {23, "AudioJitterBufferFeatures"},
      {24, "MinAudioSlideBufferDelay"},
      {25, "MaxAudioSlideBufferDelay"},
      {26, "ReserveDelayForRTX"},
      {27, "RtxDedup"},
      {28, "EnableFECForRetransmission"},
      {29, "EnableCaptureRawData"},
      {34, "EnableImprovedAagc"},
      {349, "DisableAAudio"},
      {350, "MobileLowVolFix"},
      {351, "KAL_FT_Unknow"},
  };
  KalConfigHelper facade(kCall);
  for (const auto& [id, key] : fixed) {
    facade.SetFeatureToggle(Toggle(id), key);
    EXPECT_EQ(facade.GetKalConfig(key, KAL_CONFIG_GROUP_FEATURE), ConfigData(key)) << id;
  }
  EXPECT_EQ(KAL_FT_Unknow, 351);
}

TEST_F(FeatureTogglesTest, AreValuesUnderTheirKeys) {
  KalConfigHelper facade(kCall);
  for (const Row& row : Catalogue()) {
    EXPECT_FALSE(facade.HaveFeatureToggle(row.enumerator));
    EXPECT_EQ(facade.SetFeatureToggle(row.enumerator, ConfigData(row.id)), kResultNobody);
    EXPECT_EQ(facade.GetKalConfig(row.key.c_str(), Group(1)), ConfigData(row.id));
    EXPECT_EQ(facade.GetFeatureToggle(row.enumerator), ConfigData(row.id));
    EXPECT_TRUE(facade.HaveFeatureToggle(row.enumerator));
  }
  EXPECT_EQ(facade.SetFeatureToggle(Toggle(0), 0), kResultUnchanged) << "never forced";
  EXPECT_EQ(facade.RemoveFeatureToggle(Toggle(0)), kResultOk);
  EXPECT_FALSE(facade.HaveFeatureToggle(Toggle(0)));
}

TEST_F(FeatureTogglesTest, AreOnUnlessSaidOtherwise) {
  KalConfigHelper facade(kCall);
  const KalFeatureToggleID toggle = Toggle(5);
  EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(toggle));
  EXPECT_FALSE(facade.HaveFeatureToggle(toggle));
  for (const ConfigData& off :
       {ConfigData(false), ConfigData("0"), ConfigData("False"), ConfigData(""), ConfigData(0.0)}) {
    facade.SetFeatureToggle(toggle, off);
    EXPECT_FALSE(facade.IsFeatureToggleDefaultOn(toggle)) << off.ToCstr();
  }
  for (const ConfigData& on : {ConfigData(true), ConfigData("on"), ConfigData(2)}) {
    facade.SetFeatureToggle(toggle, on);
    EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(toggle)) << on.ToCstr();
  }
  facade.SetFeatureToggle(toggle, false);
  facade.RemoveFeatureToggle(toggle);
  EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(toggle));
}

TEST_F(FeatureTogglesTest, NotifyTheirSubscribers) {
  KalConfigHelper facade(kCall);
  KalConfigHelper other(kCall);
  std::vector<std::string> seen;
  ASSERT_NE(facade.SubscribeFeatureToggle(
                Toggle(5),
                [&](const KalConfigEvent& e) { seen.push_back(e.m_name + "=" + e.m_newValue.ToString()); }),
            0U);
  EXPECT_EQ(other.SetFeatureToggle(Toggle(5), "x"), kResultOk);
  EXPECT_EQ(other.SetKalConfig("EnableMusicDetection", "y", KAL_CONFIG_GROUP_FEATURE), kResultOk);
  EXPECT_EQ(facade.UnsubscribeFeatureToggle(Toggle(5)), kResultOk);
  EXPECT_EQ(other.SetFeatureToggle(Toggle(5), "z"), kResultNobody);
  EXPECT_THAT(seen, testing::ElementsAre("EnableMusicDetection=x", "EnableMusicDetection=y"));
}

TEST_F(FeatureTogglesTest, HandChangesOverUnlessSaidOtherwise) {
  ACmThread worker;
  worker.Start();
  KalConfigHelper facade(kCall);
  std::string seen;
  facade.SubscribeFeatureToggle(
      Toggle(5), [&](const KalConfigEvent& change) { seen = change.m_newValue.ToString(); }, &worker);
  Send(worker, [&] {
    facade.SetFeatureToggle(Toggle(5), "x");
    EXPECT_EQ(seen, "x");  // Posted, it would come after this.
  });
}

TEST_F(FeatureTogglesTest, HaveNoKeyAboveTheLast) {
  KalConfigHelper facade(kCall);
  for (const std::uint32_t id : {352U, 400U, 0xFFFFFFFFU}) {
    EXPECT_EQ(facade.SetFeatureToggle(Toggle(id), 1), kResultBadArgument);
    EXPECT_FALSE(facade.GetFeatureToggle(Toggle(id)).IsValid());
    EXPECT_FALSE(facade.HaveFeatureToggle(Toggle(id)));
    EXPECT_EQ(facade.RemoveFeatureToggle(Toggle(id)), kResultBadArgument);
    EXPECT_EQ(facade.SubscribeFeatureToggle(Toggle(id), [](const KalConfigEvent&) {}), 0U);
    EXPECT_EQ(facade.UnsubscribeFeatureToggle(Toggle(id)), kResultBadArgument);
    EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(Toggle(id)));
  }
  EXPECT_STREQ(facade.DumpKalConfigs(2), R"({"Feature":[]})");
}

TEST_F(FeatureTogglesTest, AreAllOnWithoutAStore) {
  KalConfigHelper facade;
  const TraceLog silent(-1);
  for (std::uint32_t id = 0; id < 353; ++id) {
    EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(Toggle(id)));
    EXPECT_FALSE(facade.HaveFeatureToggle(Toggle(id)));
  }
}

}  // namespace
}  // namespace kalStore
