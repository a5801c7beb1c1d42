// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/typed.h"

namespace kalStore {

/// A store that is not the library's own. The parameter keeps apart what is compiled with and without RTTI.
template <bool kHasRtti>
class ForeignStore : public IKalConfig {
 public:
  SubscribeId_t SubscribeConfig(KalConfigGroup, const char*, fnConfigChangedCallBack, ACmThread*,
                                bool) override {
    return 0;
  }
  SubscribeId_t BindConfig(KalConfigGroup, const char*, fnConfigInvokeCallBack) override { return 0; }
  std::int32_t UnsubscribeConfig(SubscribeId_t) override { return kResultNotFound; }
  std::int32_t SetKalConfig(KalConfigGroup, const char*, ConfigData, bool, bool) override {
    return kResultNobody;
  }
  std::int32_t GetKalConfig(KalConfigGroup, const char*, ConfigData& value) override {
    value = 15;
    return kResultOk;
  }
  std::int32_t GetDynamicConfig(KalConfigGroup, const char*, ConfigData&, ConfigData) override {
    return kResultBadArgument;
  }
  std::int32_t RemoveKalConfig(KalConfigGroup, const char*) override { return kResultOk; }
  std::int32_t RemoveKalConfigByGroup(KalConfigGroup) override { return kResultOk; }
  const char* DumpKalConfigs(ConfigMultGroup_t) override { return "{}"; }
  std::int32_t ApplyKalConfigs(const char*) override { return kResultOk; }
};

/// Lives as long as the program. Nothing but its own source file may call it: sanitizers would read its type.
IKalConfig* StoreWithoutRtti();

}  // namespace kalStore
