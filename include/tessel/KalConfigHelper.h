#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "tessel/IKalConfig.h"
#include "tessel/KalConfigEvent.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/KalFeatureToggleID.h"
#include "tessel/KalSessionType.h"
#include "tessel/export.h"

namespace kalStore {

class KalConfigObserverHelper;

/// What a media component holds to use the settings of its call. It may be made before the call is known,
/// subscribe before the call's store exists, and be destroyed while callbacks run on other threads.
///
/// States:
///                      SetCallId(id)                          operations on values     subscriptions
///   not bound          binds, for life: 0                     0x46004003, an           recorded, id 0; made
///                                                             assertion is reported    when the facade binds
///   bound to a call    0 for the same id, else 0x46004001     go to the call's store   go to the call's
///   store
///
/// The group argument KAL_CONFIG_GROUP_DEFAULT (0xFFFFFFFF) means the facade's default group, which is set
/// once, by SetKalSessionType() or SetDefaultGroup(); while it is not set, such a call fails with 0x46004001
/// (id 0, an empty value). Other groups go to the store as they are, which refuses those above 12 with
/// 0x46004003. A null name gives 0x46004003 and an assertion report. Results are otherwise those of
/// IKalConfig's operation of the same name, which also says on which threads callbacks run.
///
/// Threads: any thread may call anything but the destructor, also while the facade binds. Binding is
/// serialised by a lock of the facade's own; nothing else takes it. It is held while recorded subscriptions
/// are made: a callback of theirs that is handed over to another thread must not bind the same facade there.
/// Lifetime: a bound facade holds one counted reference to the call's store until it is destroyed.
class TESSEL_API KalConfigHelper {
 public:
  /// Not bound.
  KalConfigHelper();
  /// Binds at once when `callId` is not kNoCallId.
  explicit KalConfigHelper(std::uint32_t callId);
  KalConfigHelper(const KalConfigHelper&) = delete;
  KalConfigHelper& operator=(const KalConfigHelper&) = delete;

  /// Removes every subscription and binding made here and gives the store back. Waits for callbacks that run
  /// on other threads, at most 50000 yields; after such a wait that ended in time, no change callback of this
  /// facade runs any more, posted ones included. Each removal then waits as IKalConfig's does, at most 3000
  /// ms. Allocates nothing. Not to be called from a callback of the same facade.
  virtual ~KalConfigHelper();

  /// SetCallId(), then SetKalSessionType(), both always: 0, or 0x46004001 if either failed.
  std::int32_t InitKalConfig(std::uint32_t callId, kal::KalSessionType sessionType);
  /// Binds to a call: see the table above. kNoCallId is refused: 0x46004001. Recorded subscriptions are made
  /// before it returns, group by group and in name order; what a callback throws at its initial delivery
  /// leaves SetCallId() once the others are made, and the facade is bound all the same. std::bad_alloc leaves
  /// it likewise: call it again, and subscribe again, which makes what is missing and refuses what is there.
  std::int32_t SetCallId(std::uint32_t callId);
  std::uint32_t GetCallId() const;

  /// Makes the session type's group the default group: 0 when it is that group now, or was before; 0x46004001
  /// when the type has no group or another default group was set.
  std::int32_t SetKalSessionType(kal::KalSessionType sessionType);
  /// The session type of the default group; 15 when it has none.
  kal::KalSessionType GetKalSessionType() const;
  /// Sets the default group, 0 to 12, if none was set: 0, otherwise 0x46004001.
  std::int32_t SetDefaultGroup(KalConfigGroup group);

  // Values. The overloads with a session type use that type's group, or the default group when it has none.

  std::int32_t SetKalConfig(const char* szConfigName, ConfigData value,
                            KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT, bool bForceNotify = false,
                            bool bTransient = false);
  std::int32_t SetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData value,
                            bool bForceNotify = false, bool bTransient = false);

  std::int32_t GetKalConfig(const char* szConfigName, ConfigData& value,
                            KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// An empty value when the read fails.
  ConfigData GetKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  std::int32_t GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData& value);
  ConfigData GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName);
  /// Whether GetKalConfig() would return 0.
  bool HaveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  std::int32_t GetDynamicConfig(const char* szConfigName, ConfigData& value,
                                KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                                ConfigData defaultValue = {});
  /// An empty value when the read fails, also where a default was given: the default is for the binding.
  ConfigData GetDynamicConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                              ConfigData defaultValue = {});

  std::int32_t RemoveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  std::int32_t RemoveKalConfigByGroup(KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  /// The store's text, see IKalConfig::DumpKalConfigs(); null when the facade is not bound.
  const char* DumpKalConfigs(ConfigMultGroup_t groups = kAllConfigGroups);
  std::int32_t ApplyKalConfigs(const char* szJsonConfig);

  // Subscriptions: one per name and group and facade. See IKalConfig for threads, exceptions and waits.

  /// The subscription's id; 0 on failure, for a name subscribed or bound here already, and while the facade
  /// is not bound (then recorded; a second call for the name replaces the first). A subscription whose
  /// initial delivery throws is not made, and not recorded either.
  SubscribeId_t SubscribeConfig(const char* szConfigName, fnConfigChangedCallBack cb,
                                KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT, ACmThread* thread = nullptr,
                                bool async = false);
  SubscribeId_t BindConfig(const char* szConfigName, fnConfigInvokeCallBack cb,
                           KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Removes by id: 0; 0x46004001 for an id that this facade does not have.
  std::int32_t UnsubscribeConfig(SubscribeId_t id);
  /// Removes by name: 0; 0x46004001 when there is none, or it waits for the facade to be bound (it stays);
  /// 0x46004003 for a null or empty name or a group above 12.
  std::int32_t UnsubscribeConfig(const char* szConfigName, KalConfigGroup group);

  // Feature toggles: values of group "Feature" under the key of an id. An id above 351 has no key and gives
  // what a null name gives.

  std::int32_t SetFeatureToggle(KalFeatureToggleID id, ConfigData value);
  ConfigData GetFeatureToggle(KalFeatureToggleID id);
  bool HaveFeatureToggle(KalFeatureToggleID id);
  std::int32_t RemoveFeatureToggle(KalFeatureToggleID id);
  SubscribeId_t SubscribeFeatureToggle(KalFeatureToggleID id, fnConfigChangedCallBack cb,
                                       ACmThread* thread = nullptr, bool async = false);
  std::int32_t UnsubscribeFeatureToggle(KalFeatureToggleID id);
  /// Whether the toggle is on: what its value says, and true when nobody set it.
  bool IsFeatureToggleDefaultOn(KalFeatureToggleID id);

 private:
  std::int32_t createKalConfig(std::uint32_t callId);
  // Puts the default group in its own value's place; without one, traces for the calling operation.
  bool resolveGroup(KalConfigGroup& group, const char* prettyFunction, const char* failure) const {
    if (group == KAL_CONFIG_GROUP_DEFAULT) group = m_defaultGroup;
    if (group != KAL_CONFIG_GROUP_DEFAULT) return true;
    reportNoGroup(prettyFunction, failure);
    return false;
  }
  void reportNoGroup(const char* prettyFunction, const char* failure) const;

  // Constant after construction.
  const std::unique_ptr<std::recursive_mutex> m_pConfigLock;  // Guards binding.
  // Written once each, and read by any thread: the call id and the store under m_pConfigLock.
  std::atomic<std::uint32_t> m_callId{kNoCallId};
  std::atomic<KalConfigGroup> m_defaultGroup{KAL_CONFIG_GROUP_DEFAULT};
  std::atomic<IKalConfig*> m_pIKalConfig{nullptr};  // One counted reference; null until bound.
  // Thread-safe by itself; given the store under m_pConfigLock.
  std::unique_ptr<KalConfigObserverHelper> m_pObserverHelper;
};

}  // namespace kalStore
