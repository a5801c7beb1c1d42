// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {

std::int32_t GetKalConfigValue(kal::KalSessionType sessionType, const char* szConfigName, ConfigData& value,
                               std::uint32_t callId) {
  if (callId == kNoCallId) return kResultBadArgument;
  return KalConfigHelper(callId).GetKalConfig(sessionType, szConfigName, value);
}

std::int32_t GetKalConfigValueEx(KalConfigGroup group, const char* szConfigName, ConfigData& value,
                                 std::uint32_t callId) {
  if (callId == kNoCallId) return kResultBadArgument;
  return KalConfigHelper(callId).GetKalConfig(szConfigName, value, group);
}

}  // namespace kalStore
