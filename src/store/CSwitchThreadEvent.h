// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/KalConfigEvent.h"
#include "util/ICmEvent.h"

namespace kalStore {

/// Carries one delivery to another thread: copies of the event and of the callback, and nothing of the
/// handler, which may be removed before the event fires.
class CSwitchThreadEvent : public ICmEvent {
 public:
  CSwitchThreadEvent(const KalConfigEvent& event, const fnConfigChangedCallBack& fnNotify);

  /// Calls the callback, if there is one; returns 0.
  int OnEventFire() override;

 protected:
  ~CSwitchThreadEvent() override;

  const KalConfigEvent m_event;
  const fnConfigChangedCallBack m_fnNotify;
};

}  // namespace kalStore
