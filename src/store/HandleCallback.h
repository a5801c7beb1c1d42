// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "tessel/KalConfigEvent.h"

namespace kalStore::internal {

/// The change callback of a handle that removes itself. The callback may own the handle, and is to leave the
/// store alone once that has ended: what is delivered on another thread may run after it.
class HandleCallback {
 public:
  virtual void Run(const KalConfigEvent& event) = 0;
  /// The store ends, and with it the subscription. A run may be in progress.
  virtual void LoseStore() = 0;

 protected:
  ~HandleCallback() = default;
};

/// As a store has it, and each delivery on its way to another thread.
struct RunsHandleCallback {
  std::shared_ptr<HandleCallback> callback;

  void operator()(const KalConfigEvent& event) const { callback->Run(event); }
};

}  // namespace kalStore::internal
