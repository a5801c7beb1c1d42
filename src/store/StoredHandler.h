// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/ConfigEventHandler.h"
#include "trace/CallContext.h"

namespace kalStore::internal {

/// A handler whose callbacks end as the component's own code.
struct StoredHandler : ConfigEventHandler {
  StoredHandler() = default;
  StoredHandler(const StoredHandler&) = delete;
  StoredHandler& operator=(const StoredHandler&) = delete;
  ~StoredHandler() { EmptyCallbacks(*this); }

  /// REQUIRES: nobody runs the callbacks any more; no lock is held, since what they captured may call in when
  /// it ends.
  static void EmptyCallbacks(ConfigEventHandler& handler) {
    const ComponentScope component;
    handler.m_fnNotify = nullptr;
    handler.m_fnInvoke = nullptr;
  }
};

}  // namespace kalStore::internal
