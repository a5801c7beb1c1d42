// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "facade/KalConfigObserverHelper.h"
#include "journal/JournalSource.h"
#include "store/FeatureToggleKeys.h"
#include "tessel/KalConfigHelper.h"

namespace kalStore {

using namespace internal;

std::int32_t KalConfigHelper::SetFeatureToggle(KalFeatureToggleID id, ConfigData value) {
  return CallForCaller([&] {
    return SetKalConfig(FeatureToggleKey(id), std::move(value), KAL_CONFIG_GROUP_FEATURE, false, false);
  });
}

ConfigData KalConfigHelper::GetFeatureToggle(KalFeatureToggleID id) {
  return GetKalConfig(FeatureToggleKey(id), KAL_CONFIG_GROUP_FEATURE);
}

bool KalConfigHelper::HaveFeatureToggle(KalFeatureToggleID id) {
  return HaveKalConfig(FeatureToggleKey(id), KAL_CONFIG_GROUP_FEATURE);
}

std::int32_t KalConfigHelper::RemoveFeatureToggle(KalFeatureToggleID id) {
  const CallerScope caller(__builtin_return_address(0));
  return RemoveKalConfig(FeatureToggleKey(id), KAL_CONFIG_GROUP_FEATURE);
}

SubscribeId_t KalConfigHelper::SubscribeFeatureToggle(KalFeatureToggleID id, fnConfigChangedCallBack cb,
                                                      ACmThread* thread, bool async) {
  const CallerScope caller(__builtin_return_address(0));
  return subscribe(FeatureToggleKey(id), std::move(cb), KAL_CONFIG_GROUP_FEATURE, thread, async);
}

std::int32_t KalConfigHelper::UnsubscribeFeatureToggle(KalFeatureToggleID id) {
  const CallerScope caller(__builtin_return_address(0));
  return UnsubscribeConfig(FeatureToggleKey(id), KAL_CONFIG_GROUP_FEATURE);
}

bool KalConfigHelper::IsFeatureToggleDefaultOn(KalFeatureToggleID id) {
  // One read, not two: a toggle that another thread removes in between is unset, not off.
  ConfigData value;
  const bool isSet = GetKalConfig(FeatureToggleKey(id), value, KAL_CONFIG_GROUP_FEATURE) == kResultOk;
  return !isSet || value;
}

}  // namespace kalStore
