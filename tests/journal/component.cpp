// SPDX-License-Identifier: Apache-2.0
#include "component.h"

#include <cstdint>

// Each function uses what its last call returns, so that it is no jump out of the function.

namespace component {

using namespace kalStore;

namespace {

constexpr ConfigKey<int> kFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
volatile int g_calls = 0;

void Use(std::int32_t result) {
  g_calls = g_calls + (result == kResultOk ? 1 : 0);
}

}  // namespace

int SetInStore(IKalConfig& store, int value) {
  const int result = store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", value, false, false);
  g_calls = g_calls + 1;
  return result;
}

int SetInFacade(KalConfigHelper& facade, int value) {
  const int result = facade.SetKalConfig("MaxFps", value, KAL_CONFIG_GROUP_VIDEO);
  g_calls = g_calls + 1;
  return result;
}

int SetWithKey(IKalConfig& store, int value) {
  const int result = kFps.Set(store, value).Code();
  g_calls = g_calls + 1;
  return result;
}

int SetToggle(KalConfigHelper& facade) {
  const int result = facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, true);
  g_calls = g_calls + 1;
  return result;
}

int SetBySession(KalConfigHelper& facade) {
  const int result = facade.SetKalConfig(kal::KAL_SESSION_VIDEO, "MaxFps", 7);
  g_calls = g_calls + 1;
  return result;
}

int Apply(KalConfigHelper& facade, const char* document) {
  const int result = facade.ApplyKalConfigs(document);
  g_calls = g_calls + 1;
  return result;
}

int Bind(KalConfigHelper& facade, unsigned int callId) {
  const int result = facade.SetCallId(callId);
  g_calls = g_calls + 1;
  return result;
}

int Ask(KalConfigHelper& facade) {
  ConfigData value;
  const int result = facade.GetDynamicConfig("MaxFps", value, KAL_CONFIG_GROUP_VIDEO);
  const ConfigData again = facade.GetDynamicConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO);
  g_calls = g_calls + (again == value ? 1 : 0);
  return result;
}

int SubscribeAndEnd(IKalConfig& store) {
  const SubscribeId_t id =
      store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  const int result = store.UnsubscribeConfig(id);
  g_calls = g_calls + 1;
  return result;
}

int SubscribeAndEndInFacade(KalConfigHelper& facade) {
  const SubscribeId_t id =
      facade.SubscribeConfig("MaxFps", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  const int result = facade.UnsubscribeConfig(id);
  g_calls = g_calls + 1;
  return result;
}

int HoldSubscription(IKalConfig& store) {
  {
    const Subscription subscription(store, KAL_CONFIG_GROUP_VIDEO, "MaxFps", [](const KalConfigEvent&) {});
    g_calls = g_calls + 1;
  }
  g_calls = g_calls + 1;
  return 0;
}

int HoldFacade(unsigned int callId) {
  {
    KalConfigHelper facade(callId);
    facade.SubscribeConfig("MaxFps", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
    facade.SubscribeConfig("MaxWidth", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  }
  const int result = CleanUpKalConfig(callId);
  g_calls = g_calls + 1;
  return result;
}

int HoldStatistics(unsigned int callId) {
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_VIDEO, callId, &entity);
  const int left = releaseTesselEntity(KAL_TESSEL_VIDEO, callId, entity);
  g_calls = g_calls + left + 1;
  createTesselEntity(KAL_TESSEL_AUDIO, callId, &entity);
  const std::uint32_t none =
      static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity))->Release();
  g_calls = g_calls + static_cast<int>(none) + 1;
  return left;
}

int HoldBinding(IKalConfig& store) {
  {
    const Binding binding(store, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                          [](const KalConfigEvent&) { return ConfigData(1); });
    g_calls = g_calls + 1;
  }
  g_calls = g_calls + 1;
  return 0;
}

int UseOtherEntries(IKalConfig& store, unsigned int callId) {
  ConfigData value;
  Use(store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, nullptr, 1, false, false));
  Use(store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "", 1, false, false));
  Use(store.GetDynamicConfig(KAL_CONFIG_GROUP_VIDEO, "Asked", value, 1));
  Use(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, "MaxFps", value, callId));
  Use(GetKalConfigValue(kal::KAL_SESSION_VIDEO, "MaxFps", value, callId));
  {
    KalConfigHelper late;
    Use(late.SetCallId(callId));
    Use(late.SetFeatureToggle(KAL_FT_EnableMusicDetection, true));
    Use(late.RemoveFeatureToggle(KAL_FT_EnableMusicDetection));
    KalConfigHelper initialised;
    Use(initialised.InitKalConfig(callId + 1, kal::KAL_SESSION_VIDEO));
  }
  IKalConfig* own = nullptr;
  Use(CreateKalConfig(callId, &own));
  Use(own->ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"15"}]})"));
  Use(own->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps"));
  Use(own->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO));
  own->BindConfig(KAL_CONFIG_GROUP_VIDEO, "Asked", [](const KalConfigEvent&) { return ConfigData(1); });
  void* const entity = kalTesselInstant.createOrGetTesselEntity(KAL_TESSEL_VIDEO, callId);
  Use(kalTesselInstant.releaseTesselEntity(KAL_TESSEL_VIDEO, callId, entity));
  Use(CleanUpKalConfig(callId));
  Use(CleanUpKalConfig(callId + 1));
  Use(ReleaseKalConfig(own));  // The last reference.
  return 0;
}

int EndStore(unsigned int callId) {
  const int result = CleanUpKalConfig(callId);
  g_calls = g_calls + 1;
  return result;
}

int EndAllStores() {
  DestroyKalConfig();
  g_calls = g_calls + 1;
  return 0;
}

int SetInCallback(KalConfigHelper& facade) {
  const SubscribeId_t id = facade.SubscribeConfig(
      "Width", [&](const KalConfigEvent&) { SetInFacade(facade, 99); }, KAL_CONFIG_GROUP_VIDEO);
  return facade.UnsubscribeConfig(id);
}

int UseCaptures(KalConfigHelper& facade, IKalConfig& store,
                const std::function<std::shared_ptr<int>()>& capture) {
  constexpr auto kVideo = KAL_CONFIG_GROUP_VIDEO;
  const auto changed = [&]() -> fnConfigChangedCallBack {
    return [owned = capture()](const KalConfigEvent&) {};
  };
  const auto asked = [&]() -> fnConfigInvokeCallBack {
    return [owned = capture()](const KalConfigEvent&) { return ConfigData(1); };
  };
  const auto executor = [&] {
    return ConfigExecutor([owned = capture()](std::function<void()>) { return true; });
  };
  // Registered and removed,
  facade.UnsubscribeConfig(facade.SubscribeConfig("Changed", changed(), kVideo));
  facade.SubscribeConfig("Changed", changed(), kVideo);
  facade.UnsubscribeConfig("Changed", kVideo);
  facade.UnsubscribeConfig(facade.BindConfig("Asked", asked(), kVideo));
  facade.SubscribeFeatureToggle(KAL_FT_EnableMusicDetection, changed());
  facade.UnsubscribeFeatureToggle(KAL_FT_EnableMusicDetection);
  store.UnsubscribeConfig(store.SubscribeConfig(kVideo, "Changed", changed(), nullptr, false));
  {
    const Subscription inStore(store, kVideo, "Changed", changed());
  }
  {
    const Subscription inFacade(facade, kVideo, "Changed", changed(), executor());
  }
  {
    const Subscription onExecutor(store, kVideo, "Changed", changed(), executor());
  }
  {
    const Binding inStore(store, kVideo, "Asked", asked());
  }
  {
    const Binding inFacade(facade, kVideo, "Asked", asked());
  }
  // assigned,
  {
    Subscription assigned(facade, kVideo, "Changed", changed());
    assigned = Subscription(facade, kVideo, "Width", changed());
    Binding bound(facade, kVideo, "Asked", asked());
    bound = Binding(facade, kVideo, "Computed", asked());
    bound.Remove();
    assigned.Remove();
  }
  // refused,
  {
    const Binding first(store, kVideo, "Asked", asked());
    const Binding second(store, kVideo, "Asked", asked());
    const Binding third(facade, kVideo, "Asked", asked());
    const Subscription unnamed(facade, kVideo, "", changed(), executor());
    const Subscription nameless(store, kVideo, "", changed(), executor());
    facade.SubscribeConfig("", changed(), kVideo);
    facade.BindConfig("", asked(), kVideo);
    facade.SubscribeConfig("Changed", changed());
    facade.SubscribeFeatureToggle(static_cast<KalFeatureToggleID>(-1), changed());
    store.SubscribeConfig(kVideo, "", changed(), nullptr, false);
    store.BindConfig(kVideo, "Asked", asked());
  }
  // replaced while they wait, and ended with their facade.
  {
    KalConfigHelper unbound;
    unbound.SubscribeConfig("Changed", changed(), kVideo);
    unbound.SubscribeConfig("Changed", changed(), kVideo);
    unbound.BindConfig("Asked", asked(), kVideo);
  }
  {
    KalConfigHelper bound(8);
    bound.SubscribeConfig("Changed", changed(), kVideo);
    bound.BindConfig("Asked", asked(), kVideo);
  }
  const int result = CleanUpKalConfig(8);
  g_calls = g_calls + 1;
  return result;
}

}  // namespace component
