// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tessel/KalConfigGroup.h"
#include "tessel/KalSessionType.h"
#include "util/ConfigData.h"

namespace kalStore {

/// What an event carries: a value of a store.
using ConfigValue = ConfigData;

/// The id of a subscription or binding, drawn per store from 1 upward and never used again; 0: none.
using SubscribeId_t = std::uint64_t;

/// What a callback receives: a change of a value, or the read of a bound one.
struct KalConfigEvent {
  std::string m_name;      ///< which value
  ConfigValue m_oldValue;  ///< before the change; empty for an initial delivery and for a binding call
  ConfigValue
      m_newValue;  ///< after the change; the current value for an initial delivery; empty for a binding
  ConfigValue m_defaultValue;  ///< the default given to GetDynamicConfig; empty for changes
  KalConfigGroup m_group = KAL_CONFIG_GROUP_DEFAULT;          ///< where it is
  kal::KalSessionType m_sessionType = kal::KAL_SESSION_NONE;  ///< of the group; 15 when it has none
};

/// Is notified of a change.
using fnConfigChangedCallBack = std::function<void(const KalConfigEvent&)>;
/// Computes the value of a bound name when it is read.
using fnConfigInvokeCallBack = std::function<ConfigValue(const KalConfigEvent&)>;

}  // namespace kalStore
