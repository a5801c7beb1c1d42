// SPDX-License-Identifier: Apache-2.0
#include "StoreProbe.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/TraceLog.h"

using namespace kalStore;

std::string StoredText(IKalConfig& store, KalConfigGroup group, const std::string& name) {
  ConfigData value;
  store.GetKalConfig(group, name.c_str(), value);
  return value.ToString();
}

unsigned int TotalObservers(IKalConfig& store) {
  const std::string key = "m_TotalObservers=";
  const TraceLog log;
  store.UnsubscribeConfig(store.SubscribeConfig(
      KAL_CONFIG_GROUP_UNIT_TEST, "count", [](const KalConfigEvent&) {}, nullptr, false));
  const std::vector<std::string> lines = log.Matching(key);
  EXPECT_FALSE(lines.empty());
  if (lines.empty()) return 0;
  return static_cast<unsigned int>(std::stoul(lines.front().substr(lines.front().find(key) + key.size())));
}

void UseFromAnotherThread(IKalConfig& store) {
  std::thread([&] {
    constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_COMMON;
    int notified = 0;
    const SubscribeId_t subscription =
        store.SubscribeConfig(kGroup, "probe", [&](const KalConfigEvent&) { ++notified; }, nullptr, false);
    const SubscribeId_t binding =
        store.BindConfig(kGroup, "probe", [](const KalConfigEvent&) { return ConfigData(2); });
    EXPECT_NE(subscription, 0U);
    EXPECT_EQ(binding, subscription + 1);
    EXPECT_EQ(store.SetKalConfig(kGroup, "probe", 1, false, false), kResultOk);
    EXPECT_EQ(notified, 1);
    EXPECT_EQ(StoredText(store, kGroup, "probe"), "1");
    ConfigData value;
    EXPECT_EQ(store.GetDynamicConfig(kGroup, "probe", value, {}), kResultOk);
    EXPECT_EQ(value.ToInt(), 2);
    EXPECT_NE(store.DumpKalConfigs(kAllConfigGroups), nullptr);
    EXPECT_EQ(store.ApplyKalConfigs(R"({"Common":[{"key":"probe","value":"3"}]})"), kResultOk);
    EXPECT_EQ(notified, 2);
    EXPECT_EQ(store.UnsubscribeConfig(subscription), kResultOk);
    EXPECT_EQ(store.UnsubscribeConfig(binding), kResultOk);
    EXPECT_EQ(store.RemoveKalConfig(kGroup, "probe"), kResultOk);
    EXPECT_EQ(store.RemoveKalConfigByGroup(KAL_CONFIG_GROUP_UNIT_TEST), kResultOk);
  }).join();
}
