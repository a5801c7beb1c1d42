#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "tessel/KalConfigEvent.h"
#include "tessel/export.h"
#include "util/ACmThread.h"

namespace kalStore {

/// One subscription (m_fnNotify) or binding (m_fnInvoke) of a store.
///
/// Threads: what registration sets stays as it is until removal has waited for the deliveries in progress and
/// empties the callbacks. m_notifyThreadId is written under the lock of the group's KalConfigObserverMgr and
/// cleared without it, only by the thread whose id it holds; access it atomically.
struct TESSEL_API ConfigEventHandler {
  using Ptr = std::shared_ptr<ConfigEventHandler>;

  fnConfigChangedCallBack m_fnNotify;  ///< empty for a binding
  SubscribeId_t m_SubscribeId = 0;     ///< 0 until registered
  KalConfigGroup m_group = KAL_CONFIG_GROUP_DEFAULT;
  std::string m_strName;
  std::atomic<std::int32_t> m_nCallLevel{0};  ///< callback runs in progress
  std::atomic<std::int32_t> m_nPendingNotify{
      0};                              ///< deliveries announced and not finished; removal waits for 0
  std::uint64_t m_notifyThreadId = 0;  ///< the thread that delivers at the moment; 0: none
  ACmThread* m_pRunThread = nullptr;   ///< not owned; null: callbacks run on the setter's thread
  bool m_bAsync = false;               ///< posted rather than handed over and waited for
  fnConfigInvokeCallBack m_fnInvoke;   ///< empty for a subscription

  /// Delivers a change: calls m_fnNotify on this thread, posts it to m_pRunThread, or hands it over and
  /// waits, see IKalConfig::SubscribeConfig(). False only without m_fnNotify. What m_fnNotify throws on this
  /// thread leaves Notify() after the bookkeeping is done.
  bool Notify(const KalConfigEvent& event);

  /// What m_fnInvoke returns, called on this thread; an empty value without it. What it throws leaves
  /// Invoke().
  ConfigValue Invoke(const KalConfigEvent& event);
};

}  // namespace kalStore
