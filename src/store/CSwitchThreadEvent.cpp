// SPDX-License-Identifier: Apache-2.0
#include "store/CSwitchThreadEvent.h"

namespace kalStore {

CSwitchThreadEvent::CSwitchThreadEvent(const KalConfigEvent& event, const fnConfigChangedCallBack& fnNotify)
    : ICmEvent(0), m_event(event), m_fnNotify(fnNotify) {}

CSwitchThreadEvent::~CSwitchThreadEvent() = default;

int CSwitchThreadEvent::OnEventFire() {
  if (m_fnNotify) m_fnNotify(m_event);
  return 0;
}

}  // namespace kalStore
