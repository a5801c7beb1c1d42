// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/inspect.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"

/// Uses the registry of statistics in every way.
inline void UseStatistics() {
  using namespace kalStore;
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_AUDIO, 7, &entity);
  kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_AUDIO, 7);
  InspectStatistics();
  releaseTesselEntity(KAL_TESSEL_AUDIO, 7, entity);
  releaseTesselEntity(KAL_TESSEL_VIDEO, 9, &entity);
}

/// Calls every operation that may be called beside those that hold stores: all but DestroyKalConfig().
inline void UseEverything() {
  using namespace kalStore;
  constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
  constexpr ConfigKey<int> kName{kGroup, "name", 0};
  IKalConfig* store = nullptr;
  CreateKalConfig(7, &store);
  {
    KalConfigHelper facade;
    facade.SubscribeConfig("early", [](const KalConfigEvent&) {}, kGroup);
    facade.InitKalConfig(7, kal::KAL_SESSION_AUDIO);
    facade.SetKalConfig("early", 1);
    const LiveConfig live(facade, kName);
    const Subscription subscription(*store, kGroup, "name", [](const KalConfigEvent&) {});
    const Binding binding(*store, kGroup, "bound", [](const KalConfigEvent&) { return ConfigValue(1); });
    store->SetKalConfig(kGroup, "name", 1, true, false);
    store->SetKalConfig(kGroup, "name", 2, false, true);
    ConfigData value;
    store->GetKalConfig(kGroup, "name", value);
    store->GetDynamicConfig(kGroup, "bound", value, 3);
    GetKalConfigValue(kal::KAL_SESSION_AUDIO, "name", value, 7);
    GetKalConfigValueEx(kGroup, "name", value, 7);
    store->ApplyKalConfigs(R"({"Audio":[{"key":"name","value":"4"}]})");
    store->RemoveKalConfig(kGroup, "name");
    store->RemoveKalConfigByGroup(kGroup);
    store->SetKalConfig(kGroup, nullptr, 1, false, false);
    store->UnsubscribeConfig(0);
    InspectCalls();
    InspectSettings(7);
    InspectSubscriptions(7);
  }
  UseStatistics();
  GetKalConfigSizeForUT();
  CleanUpKalConfig(7);
  ReleaseKalConfig(store);
}
