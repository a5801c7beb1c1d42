// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalSource.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {

std::int32_t GetKalConfigValue(kal::KalSessionType sessionType, const char* szConfigName, ConfigData& value,
                               std::uint32_t callId) {
  if (callId == kNoCallId) return kResultBadArgument;
  const internal::CallerScope caller(__builtin_return_address(0));
  return KalConfigHelper(callId).GetKalConfig(sessionType, szConfigName, value);
}

std::int32_t GetKalConfigValueEx(KalConfigGroup group, const char* szConfigName, ConfigData& value,
                                 std::uint32_t callId) {
  if (callId == kNoCallId) return kResultBadArgument;
  const internal::CallerScope caller(__builtin_return_address(0));
  return KalConfigHelper(callId).GetKalConfig(szConfigName, value, group);
}

}  // namespace kalStore
