// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "tessel/KalConfigEvent.h"
#include "tessel/export.h"
#include "util/ACmThread.h"

namespace kalStore {

/// One subscription (m_fnNotify) or binding (m_fnInvoke) of a store, which makes and runs it.
///
/// @threads What registration sets stays as it is until removal has waited for the deliveries in progress and
/// empties the callbacks. m_notifyThreadId is written under the lock of the group's KalConfigObserverMgr and
/// cleared without it, only by the thread whose id it holds; access it atomically.
/// @par Example
/// @code{.cpp}
/// ConfigEventHandler handler;
/// std::string notified;
/// handler.m_fnNotify = [&](const KalConfigEvent& event) { notified = event.m_newValue.ToString(); };
/// KalConfigEvent event;
/// event.m_newValue = 30;
/// assert(handler.Notify(event) && notified == "30");
/// assert(!handler.Invoke(event).IsValid());  // no binding
/// @endcode
struct TESSEL_API ConfigEventHandler {
  /// Shared by the store and the deliveries under way.
  using Ptr = std::shared_ptr<ConfigEventHandler>;

  fnConfigChangedCallBack m_fnNotify;                 ///< empty for a binding
  SubscribeId_t m_SubscribeId = 0;                    ///< 0 until registered
  KalConfigGroup m_group = KAL_CONFIG_GROUP_DEFAULT;  ///< where the value is
  std::string m_strName;                              ///< which value
  std::atomic<std::int32_t> m_nCallLevel{0};          ///< callback runs in progress
  /// Deliveries announced and not finished, beside that of m_notifyThreadId; removal waits for 0 of both.
  std::atomic<std::int32_t> m_nPendingNotify{0};
  alignas(8) std::uint64_t m_notifyThreadId = 0;  ///< the thread that delivers at the moment; 0: none
  ACmThread* m_pRunThread = nullptr;              ///< not owned; null: callbacks run on the setter's thread
  bool m_bAsync = false;                          ///< posted rather than handed over and waited for
  std::atomic<bool> m_bRegistered{false};         ///< in the lists of a store that has not ended
  fnConfigInvokeCallBack m_fnInvoke;              ///< empty for a subscription

  /// Delivers a change: calls m_fnNotify on this thread, posts it to m_pRunThread, or hands it over and
  /// waits, see IKalConfig::SubscribeConfig(). What m_fnNotify throws on this thread leaves Notify() after
  /// the bookkeeping is done.
  /// @param event  handed to the callback; copied when another thread runs it
  /// @return False only without m_fnNotify.
  bool Notify(const KalConfigEvent& event);

  /// Calls m_fnInvoke, on this thread. What it throws leaves Invoke().
  /// @param event  handed to the callback
  /// @return What it returns; an empty value without it.
  ConfigValue Invoke(const KalConfigEvent& event);
};

}  // namespace kalStore
