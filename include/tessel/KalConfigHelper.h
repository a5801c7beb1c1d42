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
/// |                      | not bound                                  | bound to a call                    |
/// |----------------------|--------------------------------------------|------------------------------------|
/// | SetCallId(id)        | binds, for life: 0                         | 0 for the same id, else 0x46004001 |
/// | operations on values | 0x46004003, an assertion is reported       | go to the call's store             |
/// | subscriptions        | recorded, id 0; made when the facade binds | go to the call's store             |
///
/// The group argument KAL_CONFIG_GROUP_DEFAULT (0xFFFFFFFF) means the facade's default group, which is set
/// once, by SetKalSessionType() or SetDefaultGroup(); while it is not set, such a call fails with 0x46004001
/// (id 0, an empty value). Other groups go to the store as they are, which refuses those above 12 with
/// 0x46004003. A null name gives 0x46004003 and an assertion report. Results are otherwise those of
/// IKalConfig's operation of the same name, which also says on which threads callbacks run.
///
/// @threads Any thread may call anything but the destructor, also while the facade binds. Binding is
/// serialised by a lock of the facade's own; nothing else takes it. It is held while recorded subscriptions
/// are made: a callback of theirs that is handed over to another thread must not bind the same facade there.
/// @lifetime A bound facade holds one counted reference to the call's store until it is destroyed.
/// @par Example
/// @code{.cpp}
/// KalConfigHelper settings;
/// int fps = 0;
/// settings.SetKalSessionType(kal::KAL_SESSION_VIDEO);
/// settings.SubscribeConfig("MaxFps", [&](const KalConfigEvent& change) { fps = change.m_newValue.ToInt();
/// }); assert(settings.SetKalConfig("MaxFps", 30) == kResultBadArgument);  // of which call?
///
/// assert(settings.SetCallId(7) == kResultOk);
/// assert(settings.SetKalConfig("MaxFps", 30) == kResultOk && fps == 30);
/// assert(settings.GetKalConfig("MaxFps").ToInt() == 30);
/// @endcode
class TESSEL_API KalConfigHelper {
 public:
  /// Not bound.
  KalConfigHelper();
  /// Binds at once. What making the store throws leaves the constructor.
  /// @param callId  the call's; kNoCallId: not bound
  explicit KalConfigHelper(std::uint32_t callId);
  KalConfigHelper(const KalConfigHelper&) = delete;
  KalConfigHelper& operator=(const KalConfigHelper&) = delete;

  /// Removes every subscription and binding made here and gives the store back. Waits for callbacks that run
  /// on other threads, at most 50000 yields; after such a wait that ended in time, no change callback of this
  /// facade runs any more, posted ones included. Each removal then waits as IKalConfig's does, at most 3000
  /// ms. Allocates nothing.
  /// @threads One owner, not in a callback of the same facade, and with no other call under way.
  /// @invalidates Ids, and the text of DumpKalConfigs() unless somebody else holds the store; what callbacks
  /// captured by reference may go, subject to the waits above.
  virtual ~KalConfigHelper();

  /// SetCallId(), then SetKalSessionType(), both always.
  /// @param callId  the call's
  /// @param sessionType  0 to 5, or 14
  /// @return 0; 0x46004001 if either failed.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings;
  /// assert(settings.InitKalConfig(7, kal::KAL_SESSION_AUDIO) == kResultOk);
  /// assert(settings.GetCallId() == 7 && settings.GetKalSessionType() == kal::KAL_SESSION_AUDIO);
  /// assert(settings.InitKalConfig(8, kal::KAL_SESSION_AUDIO) == kResultNotFound);  // bound for life
  /// @endcode
  std::int32_t InitKalConfig(std::uint32_t callId, kal::KalSessionType sessionType);
  /// Binds to a call: see the table above. Recorded subscriptions are made before it returns, group by group
  /// and in name order; what a callback throws at its initial delivery leaves SetCallId() once the others are
  /// made, and the facade is bound all the same. std::bad_alloc leaves it likewise: call it again, and
  /// subscribe again, which makes what is missing and refuses what is there.
  /// @param callId  the call's
  /// @return 0, also when bound to that call already; 0x46004001 when bound to another one, and for
  /// kNoCallId.
  std::int32_t SetCallId(std::uint32_t callId);
  /// @return The call's id; kNoCallId while not bound.
  std::uint32_t GetCallId() const;

  /// Makes the session type's group the default group.
  /// @param sessionType  0 to 5, or 14
  /// @return 0 when it is that group now, or was before; 0x46004001 when the type has no group or another
  /// default group was set.
  std::int32_t SetKalSessionType(kal::KalSessionType sessionType);
  /// @return The session type of the default group; 15 when it has none.
  kal::KalSessionType GetKalSessionType() const;
  /// Sets the default group.
  /// @param group  0 to 12
  /// @return 0; 0x46004001 for a bad group, or when one was set before, be it the same.
  std::int32_t SetDefaultGroup(KalConfigGroup group);

  // Values. The overloads with a session type use that type's group, or the default group when it has none.

  /// Stores a value and tells the name's subscribers.
  /// @param szConfigName  not null, not empty
  /// @param value  valid
  /// @param group  0 to 12, or the default group
  /// @param bForceNotify  tells of an equal value, too
  /// @param bTransient  announces the value without storing it, and removes what was stored
  /// @return 0 when a subscriber was told, 0x4600400a when there was none, 0x46004009 when the value did not
  /// change (all three: stored); 0x46004003 for a bad argument and while not bound, 0x46004001 without a
  /// group (both: nothing stored).
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// assert(settings.SetKalConfig("Locale", "de", KAL_CONFIG_GROUP_COMMON) == kResultNobody);  // stored
  /// assert(settings.SetKalConfig("Locale", "de", KAL_CONFIG_GROUP_COMMON) == kResultUnchanged);
  /// assert(settings.SetKalConfig("Locale", "de") == kResultNotFound);  // no default group yet
  /// @endcode
  std::int32_t SetKalConfig(const char* szConfigName, ConfigData value,
                            KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT, bool bForceNotify = false,
                            bool bTransient = false);
  /// The same in the group of a session type.
  /// @param sessionType  0 to 5, or 14; any other: the default group
  /// @param szConfigName  not null, not empty
  /// @param value  valid
  /// @param bForceNotify  tells of an equal value, too
  /// @param bTransient  announces the value without storing it, and removes what was stored
  /// @return As above: 0, 0x4600400a or 0x46004009 when stored, 0x46004003 or 0x46004001 when not.
  std::int32_t SetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData value,
                            bool bForceNotify = false, bool bTransient = false);

  /// Reads a stored value.
  /// @param szConfigName  not null, not empty
  /// @param value  receives a copy
  /// @param group  0 to 12, or the default group
  /// @return 0; 0x46004001 when there is none, with `value` made invalid, and without a group, with `value`
  /// untouched; 0x46004003 for a bad argument and while not bound, with `value` untouched.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// settings.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO);
  /// ConfigData value;
  /// assert(settings.GetKalConfig("Bitrate", value, KAL_CONFIG_GROUP_AUDIO) == kResultOk);
  /// assert(settings.GetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate").ToInt() == 32000);
  /// assert(!settings.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_VIDEO).IsValid());
  /// @endcode
  std::int32_t GetKalConfig(const char* szConfigName, ConfigData& value,
                            KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// The same, for those who need no result code.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return The value; an empty one when the read fails.
  ConfigData GetKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Reads a stored value in the group of a session type.
  /// @param sessionType  0 to 5, or 14; any other: the default group
  /// @param szConfigName  not null, not empty
  /// @param value  receives a copy
  /// @return As the first overload: 0, 0x46004001 or 0x46004003.
  std::int32_t GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData& value);
  /// The same, for those who need no result code.
  /// @param sessionType  0 to 5, or 14; any other: the default group
  /// @param szConfigName  not null, not empty
  /// @return The value; an empty one when the read fails.
  ConfigData GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName);
  /// Asks for a stored value.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return Whether GetKalConfig() would return 0.
  bool HaveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  /// Asks the name's binding, see BindConfig(). Stored values are not consulted.
  /// @param szConfigName  not null, not empty
  /// @param value  receives what the binding returned
  /// @param group  0 to 12, or the default group
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return 0; 0x4600400a without a binding, 0x46004001 without a group, 0x46004003 for a bad argument and
  /// while not bound, all with `value` untouched.
  std::int32_t GetDynamicConfig(const char* szConfigName, ConfigData& value,
                                KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                                ConfigData defaultValue = {});
  /// The same, for those who need no result code.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return The value; an empty one when the read fails, also where a default was given: the default is for
  /// the binding.
  ConfigData GetDynamicConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                              ConfigData defaultValue = {});

  /// Removes a stored value and tells nobody.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return 0, also when there was none; 0x46004001 without a group; 0x46004003 for a bad argument and while
  /// not bound.
  std::int32_t RemoveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Removes all values of the group and tells nobody; subscriptions and bindings stay.
  /// @param group  0 to 12, or the default group
  /// @return 0; 0x46004001 without a group; 0x46004003 for a bad group and while not bound.
  std::int32_t RemoveKalConfigByGroup(KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  /// Writes the stored values of groups as a settings document, see IKalConfig::DumpKalConfigs().
  /// @param groups  bit g selects group g; bits 13 and above are ignored
  /// @return The store's text; null while not bound. It lives until the next dump of the same store, by
  /// whomever and from whatever thread, or the store's end; do not free it.
  /// @invalidates The text that the previous dump of the store returned.
  const char* DumpKalConfigs(ConfigMultGroup_t groups = kAllConfigGroups);
  /// Sets every entry of a settings document, see IKalConfig::ApplyKalConfigs().
  /// @param szJsonConfig  the document's text, up to its NUL; not null
  /// @return 0, also when entries were skipped; 0x46004001 when the text is no JSON object, with nothing
  /// stored; 0x46004003 for null and while not bound.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// settings.ApplyKalConfigs(R"({"Audio":[{"key":"Bitrate","value":"32000"}]})");
  /// assert(settings.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO).ToInt() == 32000);
  /// assert(std::strstr(settings.DumpKalConfigs(), "32000"));
  /// @endcode
  std::int32_t ApplyKalConfigs(const char* szJsonConfig);

  // Subscriptions: one per name and group and facade. See IKalConfig for threads, exceptions and waits.

  /// Has `cb` told of every change of the name, and at once of its current value if there is one. While the
  /// facade is not bound, the subscription is recorded; a second call for the name replaces the first. One
  /// whose initial delivery throws is not made, and not recorded either.
  /// @param szConfigName  not null, not empty
  /// @param cb  told of the changes; not empty
  /// @param group  0 to 12, or the default group
  /// @param thread  where `cb` runs, see IKalConfig::SubscribeConfig(); not owned, must outlive the
  /// subscription
  /// @param async  whether `thread` is posted to rather than waited for
  /// @return The subscription's id; 0 on failure, for a name subscribed or bound here already, and when it
  /// was recorded.
  /// @par Example
  /// @code{.cpp}
  /// ACmThread worker("settings");
  /// worker.Start();
  /// std::atomic<int> bitrate{0};
  /// {
  ///   KalConfigHelper settings(7);
  ///   const auto onChange = [&](const KalConfigEvent& change) { bitrate = change.m_newValue.ToInt(); };
  ///   settings.SubscribeConfig("Bitrate", onChange, KAL_CONFIG_GROUP_AUDIO, &worker);
  ///   settings.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO);  // waits for the worker
  ///   assert(bitrate == 32000);
  ///   assert(settings.UnsubscribeConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO) == kResultOk);
  /// }
  /// @endcode
  SubscribeId_t SubscribeConfig(const char* szConfigName, fnConfigChangedCallBack cb,
                                KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT, ACmThread* thread = nullptr,
                                bool async = false);
  /// Has `cb` compute the name's value whenever it is read with GetDynamicConfig(), on the reader's thread.
  /// Recorded while the facade is not bound, as a subscription is.
  /// @param szConfigName  not null, not empty
  /// @param cb  returns the value, given the reader's default; not empty
  /// @param group  0 to 12, or the default group
  /// @return The binding's id; 0 on failure, for a name subscribed or bound here already or bound elsewhere,
  /// and when it was recorded.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper encoder(7);
  /// encoder.BindConfig("Load", [](const KalConfigEvent&) { return ConfigData(0.25); },
  ///                    KAL_CONFIG_GROUP_METRICS);
  /// KalConfigHelper reporter(7);
  /// assert(reporter.GetDynamicConfig("Load", KAL_CONFIG_GROUP_METRICS).ToDouble() == 0.25);
  /// @endcode
  SubscribeId_t BindConfig(const char* szConfigName, fnConfigInvokeCallBack cb,
                           KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Removes a subscription or binding. Waits as IKalConfig::UnsubscribeConfig() does, at most 3000 ms.
  /// @param id  as SubscribeConfig() or BindConfig() returned it
  /// @return 0, also when the wait gave up; 0x46004001 for an id that this facade does not have.
  /// @invalidates The id; what the callback captured by reference may go, subject to the wait.
  std::int32_t UnsubscribeConfig(SubscribeId_t id);
  /// The same by name.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return 0, also when the wait gave up; 0x46004001 when there is none, without a group, or when it waits
  /// for the facade to be bound (it stays); 0x46004003 for a null or empty name or a group above 12.
  /// @invalidates As by id.
  std::int32_t UnsubscribeConfig(const char* szConfigName, KalConfigGroup group);

  // Feature toggles: values of group "Feature" under the key of an id. An id above 351 has no key and gives
  // what a null name gives.

  /// SetKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @param value  valid
  /// @return 0, 0x4600400a or 0x46004009 (all three: stored), or 0x46004003, as SetKalConfig().
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// assert(settings.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));  // nobody set it
  /// settings.SetFeatureToggle(KAL_FT_EnableMusicDetection, false);
  /// assert(!settings.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));
  /// assert(settings.HaveKalConfig("EnableMusicDetection", KAL_CONFIG_GROUP_FEATURE));
  /// settings.RemoveFeatureToggle(KAL_FT_EnableMusicDetection);
  /// assert(!settings.HaveFeatureToggle(KAL_FT_EnableMusicDetection));
  /// @endcode
  std::int32_t SetFeatureToggle(KalFeatureToggleID id, ConfigData value);
  /// GetKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return The value; an empty one when the read fails.
  ConfigData GetFeatureToggle(KalFeatureToggleID id);
  /// HaveKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return Whether somebody has set it.
  bool HaveFeatureToggle(KalFeatureToggleID id);
  /// RemoveKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return 0, also when there was none; 0x46004003 for a bad id and while not bound.
  std::int32_t RemoveFeatureToggle(KalFeatureToggleID id);
  /// SubscribeConfig() to a toggle's value.
  /// @param id  0 to 351
  /// @param cb  told of the changes; not empty
  /// @param thread  where `cb` runs; not owned, must outlive the subscription
  /// @param async  whether `thread` is posted to rather than waited for
  /// @return As SubscribeConfig(): the subscription's id, or 0.
  SubscribeId_t SubscribeFeatureToggle(KalFeatureToggleID id, fnConfigChangedCallBack cb,
                                       ACmThread* thread = nullptr, bool async = false);
  /// UnsubscribeConfig() from a toggle's value.
  /// @param id  0 to 351
  /// @return 0; 0x46004001 when there is no subscription or it is only recorded; 0x46004003 for a bad id.
  std::int32_t UnsubscribeFeatureToggle(KalFeatureToggleID id);
  /// Whether the toggle is on.
  /// @param id  0 to 351
  /// @return What its value says; true when nobody set it, and when the read fails.
  bool IsFeatureToggleDefaultOn(KalFeatureToggleID id);

 private:
  std::int32_t createKalConfig(std::uint32_t callId);
  // Puts the default group in its own value's place; without one, traces for the calling operation.
  bool resolveGroup(KalConfigGroup& group, const char* label, const char* failure) const {
    if (group == KAL_CONFIG_GROUP_DEFAULT) group = m_defaultGroup;
    if (group != KAL_CONFIG_GROUP_DEFAULT) return true;
    reportNoGroup(label, failure);
    return false;
  }
  void reportNoGroup(const char* label, const char* failure) const;

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
