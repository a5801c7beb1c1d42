// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/ResultCode.h"

namespace kalStore {

/// Whether a set was carried out, whether or not a subscriber was notified. The value is then stored; a
/// transient one is announced, and what was stored is removed.
/// @param setResult  what a SetKalConfig() returned
/// @return True for kResultOk, kResultUnchanged and kResultNobody.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// KalConfigHelper settings(7);
/// assert(IsStored(settings.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO)));
/// assert(!IsStored(settings.SetKalConfig("", 32000, KAL_CONFIG_GROUP_AUDIO)));
/// @endcode
constexpr bool IsStored(std::int32_t setResult) {
  return setResult == kResultOk || setResult == kResultNobody || setResult == kResultUnchanged;
}

/// What became of a set. It is no number and no flag: 0 is one of three codes that mean success.
/// @threads A plain value.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
/// KalConfigHelper settings(7);
/// const SetResult result = kMaxFps.Set(settings, 15);
/// assert(result.IsStored() && !result.WasTold() && result.Code() == kResultNobody);
/// @endcode
class SetResult {
 public:
  /// @param code  what a SetKalConfig() returned
  constexpr explicit SetResult(std::int32_t code) : m_code(code) {}

  /// @return Whether the set was carried out, whether or not a subscriber was notified.
  constexpr bool IsStored() const { return kalStore::IsStored(m_code); }
  /// @return Whether a subscriber was notified.
  constexpr bool WasTold() const { return m_code == kResultOk; }
  /// @return kResultOk when a subscriber was notified, kResultNobody, kResultUnchanged, or why nothing was
  /// stored.
  constexpr std::int32_t Code() const { return m_code; }

 private:
  std::int32_t m_code;
};

}  // namespace kalStore
