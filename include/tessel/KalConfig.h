// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "tessel/ConfigEventHandler.h"
#include "tessel/IKalConfig.h"
#include "tessel/KalConfigObserverMgr.h"
#include "tessel/atomMap.h"
#include "tessel/locking.h"

namespace kalStore {

namespace internal {
class LiveRegistration;
class LiveRegistrations;
struct SetInJournal;
struct StoreParts;
}  // namespace internal

/// The store of one call. Obtain it with CreateKalConfig() and use it through IKalConfig.
class TESSEL_API KalConfig : public IKalConfig {
 public:
  /// An empty store.
  /// @param callId  any; shown in trace lines
  explicit KalConfig(std::uint32_t callId);
  KalConfig(const KalConfig&) = delete;
  KalConfig& operator=(const KalConfig&) = delete;

  SubscribeId_t SubscribeConfig(KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                                ACmThread* pRunThread, bool bAsync) override;
  SubscribeId_t BindConfig(KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn) override;
  std::int32_t UnsubscribeConfig(SubscribeId_t id) override;
  std::int32_t SetKalConfig(KalConfigGroup group, const char* name, ConfigData value, bool bForceNotify,
                            bool bTransient) override;
  std::int32_t GetKalConfig(KalConfigGroup group, const char* name, ConfigData& value) override;
  std::int32_t GetDynamicConfig(KalConfigGroup group, const char* name, ConfigData& value,
                                ConfigData defaultValue) override;
  std::int32_t RemoveKalConfig(KalConfigGroup group, const char* name) override;
  std::int32_t RemoveKalConfigByGroup(KalConfigGroup group) override;
  const char* DumpKalConfigs(ConfigMultGroup_t groups) override;
  std::int32_t ApplyKalConfigs(const char* szJsonConfig) override;

  ~KalConfig() override;

  /// Sets the cleaned-up flag, so that the registry drops its reference once.
  /// @threads Only the registry's, under its lock.
  /// @return False when it was set already.
  bool MarkCleanedUp();

  /// Ends every subscription and binding.
  /// @threads Only the thread that is about to end the store.
  /// @return Whether there were any.
  [[gnu::visibility("hidden")]] bool DropHandlers();
  /// Does what the destructor does, but for freeing the values, of which there may be many. Again: with what
  /// was registered since.
  /// @threads Only the thread that is about to end the store.
  /// @return Whether there were subscriptions or bindings.
  [[gnu::visibility("hidden")]] bool End() noexcept;

 private:
  friend class internal::LiveRegistration;
  friend struct internal::StoreParts;

  using ObserverMgr = KalConfigObserverMgr<ConfigEventHandler::Ptr>;
  // A value may end under the lock: that runs no code but its own.
  using ConfigMap = atomMap<std::string, ConfigData>;

  // REQUIRES: IsConfigGroup(group).
  ConfigMap& configsOf(KalConfigGroup group) { return m_configs[static_cast<std::size_t>(group)]; }
  ObserverMgr& observersOf(KalConfigGroup group) { return m_observerMgrs[static_cast<std::size_t>(group)]; }

  // Registration (KalConfigSubscriptions.cpp).
  [[gnu::visibility("hidden")]] SubscribeId_t subscribeConfig(KalConfigGroup group, const char* name,
                                                              ConfigEventHandler::Ptr handlerPtr,
                                                              ACmThread* pRunThread, bool bAsync,
                                                              const void* caller);
  [[gnu::visibility("hidden")]] SubscribeId_t bindConfig(KalConfigGroup group, const char* name,
                                                         ConfigEventHandler::Ptr handlerPtr,
                                                         const void* caller);
  void registerId(const ConfigEventHandler::Ptr& handlerPtr, int assertionLine);
  [[gnu::visibility("hidden")]] void withdraw(const ConfigEventHandler::Ptr& handlerPtr, const void* caller);
  [[gnu::visibility("hidden")]] std::int32_t unsubscribeConfig(KalConfigGroup group, const char* name,
                                                               const ConfigEventHandler::Ptr& handlerPtr,
                                                               const void* caller);

  // Delivery (KalConfigDelivery.cpp).
  std::int32_t fireEvents(ObserverMgr& observers, const char* name, ConfigValue&& oldValue,
                          ConfigValue&& newValue, KalConfigGroup group, bool bForceNotify);
  std::int32_t invokeEvent(ObserverMgr& observers, const char* name, ConfigValue& value,
                           ConfigValue&& defaultValue, KalConfigGroup group);
  // The same with events in the journal, and a set. `set` has what SetKalConfig() knows.
  [[gnu::visibility("hidden")]] std::int32_t setInJournal(const void* caller, KalConfigGroup group,
                                                          const char* name, ConfigData&& value,
                                                          bool bForceNotify, bool bTransient);
  [[gnu::visibility("hidden")]] std::int32_t fireInJournal(ObserverMgr& observers,
                                                           internal::SetInJournal& set, const char* name,
                                                           ConfigValue&& oldValue, ConfigValue&& newValue,
                                                           bool bForceNotify);
  [[gnu::visibility("hidden")]] std::int32_t invokeInJournal(const void* caller, const char* name,
                                                             ConfigValue& value, ConfigValue&& defaultValue,
                                                             KalConfigGroup group);

  const std::uint32_t m_callId;
  std::string m_dumpText TESSEL_LOCKING(guarded_by(m_dumpLock));
  // What follows the values; null until something does, which is all that other stores' sets look at. Set
  // once, under internal::g_liveMutex.
  std::atomic<internal::LiveRegistrations*> m_live{nullptr};
  atomMap<SubscribeId_t, ConfigEventHandler::Ptr> m_mapIDs;
  std::array<ObserverMgr, KAL_CONFIG_GROUP_LAST> m_observerMgrs;
  std::array<ConfigMap, KAL_CONFIG_GROUP_LAST> m_configs;
  bool m_bCleanedUp = false;  // Protected by the registry's lock.
  bool m_hasEnded = false;    // The ending thread's own.
  std::atomic<std::uint64_t> m_nSubscribeSeq{0};
  std::atomic<std::uint32_t> m_TotalObservers{0};
  detail::Mutex<std::mutex> m_dumpLock;
};

}  // namespace kalStore
