// SPDX-License-Identifier: Apache-2.0
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
#include "tessel/locking.h"

namespace kalStore {

class KalConfigObserverHelper;

namespace internal {
class FacadeRegistration;
class LiveRegistrar;
struct ObserverRecord;
}  // namespace internal

/// What a media component holds to use the settings of its call. It can be made before the call is known,
/// subscribe before the call's store exists, and be destroyed while callbacks run on other threads.
///
/// |                      | not bound                                  | bound to a call                    |
/// |----------------------|--------------------------------------------|------------------------------------|
/// | SetCallId(id)        | binds, for life: kResultOk                 | kResultOk for this id only         |
/// | operations on values | kResultBadArgument, an assertion report    | go to the call's store             |
/// | subscriptions        | recorded, id 0; made when the facade binds | go to the call's store             |
///
/// The group argument KAL_CONFIG_GROUP_DEFAULT (0xFFFFFFFF) means the facade's default group, which is set
/// once, by SetKalSessionType() or SetDefaultGroup(); while it is not set, such a call fails with
/// kResultNotFound (id 0, an invalid value). Other groups go to the store as they are, which refuses those
/// above 12 with kResultBadArgument. A null name gives kResultBadArgument (id 0, an invalid value);
/// operations on values, and those that subscribe or bind, report an assertion for it as well. Results are
/// otherwise those of IKalConfig's operation of the same name, which also says on which threads callbacks
/// run.
///
/// A change callback of a removed subscription is not called any more, however late a delivery comes: what
/// waits in a thread's queue is dropped. This is more than the store itself promises, see
/// IKalConfig::UnsubscribeConfig().
///
/// @threads Any thread may call anything but the destructor, also while the facade binds. A lock of the
/// facade's own serialises binding; nothing else takes it. The facade holds it while it makes the store and
/// the recorded subscriptions: a callback or trace sink that runs on another thread meanwhile must not bind
/// the same facade.
/// @lifetime A bound facade holds one counted reference to the call's store until it is destroyed.
/// @par Example
/// @code{.cpp}
/// KalConfigHelper settings;
/// int fps = 0;
/// settings.SetKalSessionType(kal::KAL_SESSION_VIDEO);
/// settings.SubscribeConfig("MaxFps",
///                          [&](const KalConfigEvent& change) { fps = change.m_newValue.ToInt(); });
/// assert(settings.SetKalConfig("MaxFps", 30) == kResultBadArgument);  // of which call?
///
/// assert(settings.SetCallId(7) == kResultOk);
/// assert(settings.SetKalConfig("MaxFps", 30) == kResultOk && fps == 30);
/// assert(settings.GetKalConfig("MaxFps").ToInt() == 30);
/// @endcode
class TESSEL_API KalConfigHelper {
 public:
  /// Not bound.
  KalConfigHelper();
  /// Binds at once. A failed allocation leaves the constructor as std::bad_alloc.
  /// @param callId  the call's; kNoCallId: not bound
  explicit KalConfigHelper(std::uint32_t callId);
  KalConfigHelper(const KalConfigHelper&) = delete;
  KalConfigHelper& operator=(const KalConfigHelper&) = delete;

  /// Removes every subscription and binding made here and releases the store. No change callback of this
  /// facade is called from then on, however late a delivery comes. Waits for change callbacks in progress, at
  /// most 50000 yields; each removal then waits as IKalConfig's does, at most 3000 ms. Inside a callback of
  /// its own these waits can only give up. Throws nothing and allocates nothing.
  /// @threads One owner, with no other call under way: also not in the initial delivery of a subscription.
  /// @invalidates Ids, and the text of DumpKalConfigs() unless somebody else holds the store; what callbacks
  /// captured by reference may go, unless a wait gave up.
  virtual ~KalConfigHelper();

  /// SetCallId(), then SetKalSessionType(), whatever the first returns; what leaves SetCallId() as an
  /// exception leaves this as well, with the default group as it was.
  /// @param callId  the call's
  /// @param sessionType  0 to 5, or 14
  /// @return kResultOk; kResultNotFound if either failed.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings;
  /// assert(settings.InitKalConfig(7, kal::KAL_SESSION_AUDIO) == kResultOk);
  /// assert(settings.GetCallId() == 7 && settings.GetKalSessionType() == kal::KAL_SESSION_AUDIO);
  /// assert(settings.InitKalConfig(8, kal::KAL_SESSION_AUDIO) == kResultNotFound);  // bound for life
  /// @endcode
  std::int32_t InitKalConfig(std::uint32_t callId, kal::KalSessionType sessionType);
  /// Binds to a call: see the table above. Makes the recorded subscriptions before it returns, group by group
  /// and in name order; what a callback throws at its initial delivery leaves SetCallId() once the others are
  /// made, and the facade is bound all the same. std::bad_alloc leaves it likewise: call it again, and
  /// subscribe again, which makes what is missing and refuses what is there.
  /// @param callId  the call's
  /// @return kResultOk, also when bound to that call already; kResultNotFound when bound to another one, for
  /// kNoCallId, and from a trace sink while the facade makes the call's store.
  std::int32_t SetCallId(std::uint32_t callId);
  /// @return The call's id; kNoCallId while not bound.
  std::uint32_t GetCallId() const;

  /// Makes the session type's group the default group.
  /// @param sessionType  0 to 5, or 14
  /// @return kResultOk when it is that group now, or was before; kResultNotFound when the type has no group
  /// or another default group was set.
  std::int32_t SetKalSessionType(kal::KalSessionType sessionType);
  /// @return The session type of the default group; KAL_SESSION_NONE when it has none.
  kal::KalSessionType GetKalSessionType() const;
  /// Sets the default group.
  /// @param group  0 to 12
  /// @return kResultOk; kResultNotFound for a bad group, or when one was set before, even the same.
  std::int32_t SetDefaultGroup(KalConfigGroup group);

  // Values. The overloads with a session type use that type's group, or the default group when it has none.

  /// Stores a value and notifies the name's subscribers.
  /// @param szConfigName  not null, not empty
  /// @param value  valid
  /// @param group  0 to 12, or the default group
  /// @param bForceNotify  notifies of an equal value, too
  /// @param bTransient  notifies of the value without storing it, and removes what was stored
  /// @return kResultOk when a subscriber was notified, kResultNobody when there was none, kResultUnchanged
  /// when the value did not change: the set was carried out; kResultBadArgument for a bad argument and while
  /// not bound, kResultNotFound without a group: nothing was stored.
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
  /// @param bForceNotify  notifies of an equal value, too
  /// @param bTransient  notifies of the value without storing it, and removes what was stored
  /// @return As above.
  std::int32_t SetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData value,
                            bool bForceNotify = false, bool bTransient = false);

  /// Reads a stored value.
  /// @param szConfigName  not null, not empty
  /// @param value  receives a copy
  /// @param group  0 to 12, or the default group
  /// @return kResultOk; kResultNotFound when there is none, with `value` made invalid, and without a group,
  /// with `value` untouched; kResultBadArgument for a bad argument and while not bound, with `value`
  /// untouched.
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
  /// @return The value; an invalid one when the read fails.
  ConfigData GetKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Reads a stored value in the group of a session type.
  /// @param sessionType  0 to 5, or 14; any other: the default group
  /// @param szConfigName  not null, not empty
  /// @param value  receives a copy
  /// @return As the first overload.
  std::int32_t GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName, ConfigData& value);
  /// The same, for those who need no result code.
  /// @param sessionType  0 to 5, or 14; any other: the default group
  /// @param szConfigName  not null, not empty
  /// @return The value; an invalid one when the read fails.
  ConfigData GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName);
  /// Looks for a stored value.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return Whether GetKalConfig() would return kResultOk.
  bool HaveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  /// Asks the name's binding, see BindConfig(). Stored values are not consulted.
  /// @param szConfigName  not null, not empty
  /// @param value  receives what the binding returned
  /// @param group  0 to 12, or the default group
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return kResultOk; kResultNobody without a binding, kResultNotFound without a group, kResultBadArgument
  /// for a bad argument and while not bound, all with `value` untouched.
  std::int32_t GetDynamicConfig(const char* szConfigName, ConfigData& value,
                                KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                                ConfigData defaultValue = {});
  /// The same, for those who need no result code.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return The value; an invalid one when the read fails, also where a default was given: the default is
  /// for the binding.
  ConfigData GetDynamicConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT,
                              ConfigData defaultValue = {});

  /// Removes a stored value and notifies nobody.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return kResultOk, also when there was none; kResultNotFound without a group; kResultBadArgument for a
  /// bad argument and while not bound.
  std::int32_t RemoveKalConfig(const char* szConfigName, KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);
  /// Removes all values of the group and notifies nobody; subscriptions and bindings stay.
  /// @param group  0 to 12, or the default group
  /// @return kResultOk; kResultNotFound without a group; kResultBadArgument for a bad group and while not
  /// bound.
  std::int32_t RemoveKalConfigByGroup(KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT);

  /// Writes the stored values of groups as a settings document, see IKalConfig::DumpKalConfigs(); a value
  /// ends at its first zero byte there.
  /// @param groups  bit g selects group g; bits 13 and above are ignored
  /// @return The store's text; null while not bound. It lives until the next dump of the same store, from
  /// whatever facade or thread, or the store's end; do not free it.
  /// @invalidates The text that the previous dump of the store returned.
  const char* DumpKalConfigs(ConfigMultGroup_t groups = kAllConfigGroups);
  /// Sets every entry of a settings document, see IKalConfig::ApplyKalConfigs().
  /// @param szJsonConfig  the document's text, up to its NUL; not null
  /// @return kResultOk, also when entries were skipped; kResultNotFound when the text is no JSON object, with
  /// nothing stored; kResultBadArgument for null and while not bound.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// settings.ApplyKalConfigs(R"({"Audio":[{"key":"Bitrate","value":"32000"}]})");
  /// assert(settings.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO).ToInt() == 32000);
  /// assert(std::strstr(settings.DumpKalConfigs(), "32000"));
  /// @endcode
  std::int32_t ApplyKalConfigs(const char* szJsonConfig);

  // Subscriptions: one per name and group and facade. See IKalConfig for threads, exceptions and waits.

  /// Notifies `cb` of every change of the name, and at once of its current value if there is one. A second
  /// subscription of a name through one facade is refused, without a trace line. While the facade is not
  /// bound, it records the subscription; a second call for the name then replaces the first. One whose
  /// initial delivery throws is not made, and not recorded either.
  /// @param szConfigName  not null, not empty
  /// @param cb  notified of the changes; not empty
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
  /// Makes `cb` compute the name's value whenever it is read with GetDynamicConfig(), on the reader's thread.
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
  /// Removes a subscription or binding. A change callback is not called from then on, however late a delivery
  /// comes.
  ///
  /// Waits as IKalConfig::UnsubscribeConfig() does, and for a posted run in progress on another thread, at
  /// most 3000 ms in all. A wait that gives up leaves a run in progress behind. It can only give up inside
  /// the callback itself, called directly or handed over, and inside that of a subscriber of the same name
  /// that the same change reaches first: a removal there takes the 3000 ms. Subscribe with `async`, or remove
  /// from elsewhere.
  /// @param id  as SubscribeConfig() or BindConfig() returned it
  /// @return kResultOk, also when the wait gave up; kResultNotFound for an id that this facade does not have.
  /// @invalidates The id; what the callback captured by reference may go, unless the wait gave up.
  std::int32_t UnsubscribeConfig(SubscribeId_t id);
  /// The same by name.
  /// @param szConfigName  not null, not empty
  /// @param group  0 to 12, or the default group
  /// @return kResultOk, also when the wait gave up; kResultNotFound when there is none, without a group, or
  /// when it is recorded only, where it stays; kResultBadArgument for a null or empty name or a group above
  /// 12, with a trace line and no assertion report.
  /// @invalidates As by id.
  std::int32_t UnsubscribeConfig(const char* szConfigName, KalConfigGroup group);

  // Feature toggles: values of group "Feature" under the key of an id. An id above 351 has no key and gives
  // what a null name gives.

  /// SetKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @param value  valid
  /// @return As SetKalConfig(); kResultBadArgument for a bad id.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// assert(settings.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));  // it is not set
  /// settings.SetFeatureToggle(KAL_FT_EnableMusicDetection, false);
  /// assert(!settings.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));
  /// assert(settings.HaveKalConfig("EnableMusicDetection", KAL_CONFIG_GROUP_FEATURE));
  /// settings.RemoveFeatureToggle(KAL_FT_EnableMusicDetection);
  /// assert(!settings.HaveFeatureToggle(KAL_FT_EnableMusicDetection));
  /// @endcode
  std::int32_t SetFeatureToggle(KalFeatureToggleID id, ConfigData value);
  /// GetKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return The value; an invalid one when the read fails.
  ConfigData GetFeatureToggle(KalFeatureToggleID id);
  /// HaveKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return Whether it is set.
  bool HaveFeatureToggle(KalFeatureToggleID id);
  /// RemoveKalConfig() of a toggle's value.
  /// @param id  0 to 351
  /// @return kResultOk, also when there was none; kResultBadArgument for a bad id and while not bound.
  std::int32_t RemoveFeatureToggle(KalFeatureToggleID id);
  /// SubscribeConfig() to a toggle's value.
  /// @param id  0 to 351
  /// @param cb  notified of the changes; not empty
  /// @param thread  where `cb` runs; not owned, must outlive the subscription
  /// @param async  whether `thread` is posted to rather than waited for
  /// @return As SubscribeConfig(): the subscription's id, or 0.
  SubscribeId_t SubscribeFeatureToggle(KalFeatureToggleID id, fnConfigChangedCallBack cb,
                                       ACmThread* thread = nullptr, bool async = false);
  /// UnsubscribeConfig() from a toggle's value.
  /// @param id  0 to 351
  /// @return kResultOk; kResultNotFound when there is no subscription or it is recorded only;
  /// kResultBadArgument for a bad id.
  std::int32_t UnsubscribeFeatureToggle(KalFeatureToggleID id);
  /// Whether the toggle is on.
  /// @param id  0 to 351
  /// @return Its value as a bool; true when it is not set, and when the read fails.
  bool IsFeatureToggleDefaultOn(KalFeatureToggleID id);

 private:
  friend class internal::FacadeRegistration;  // A Subscription removes by the record, not by the name.
  friend class internal::LiveRegistrar;

  std::int32_t createKalConfig(std::uint32_t callId);
  [[gnu::visibility("hidden")]] std::shared_ptr<internal::ObserverRecord> makeRecord(
      const char* szConfigName, fnConfigChangedCallBack&& cb, KalConfigGroup group, ACmThread* thread,
      bool async);
  [[gnu::visibility("hidden")]] SubscribeId_t subscribe(const char* szConfigName,
                                                        fnConfigChangedCallBack&& cb, KalConfigGroup group,
                                                        ACmThread* thread, bool async);
  // Replaces KAL_CONFIG_GROUP_DEFAULT by the default group; without one, traces for the calling operation.
  bool resolveGroup(KalConfigGroup& group, const char* label, const char* failure) const {
    if (group == KAL_CONFIG_GROUP_DEFAULT) group = m_defaultGroup;
    if (group != KAL_CONFIG_GROUP_DEFAULT) return true;
    reportNoGroup(label, failure);
    return false;
  }
  void reportNoGroup(const char* label, const char* failure) const;
  [[gnu::visibility("hidden")]] std::int32_t getDynamicConfig(const char* szConfigName, ConfigData& value,
                                                              KalConfigGroup group, ConfigData&& defaultValue,
                                                              const void* caller);

  // Constant after construction.
  const std::unique_ptr<detail::Mutex<std::recursive_mutex>> m_pConfigLock;  // Guards binding.
  // Written once each, and read by any thread: the call id and the store under m_pConfigLock.
  std::atomic<std::uint32_t> m_callId{kNoCallId};
  std::atomic<KalConfigGroup> m_defaultGroup{KAL_CONFIG_GROUP_DEFAULT};
  std::atomic<IKalConfig*> m_pIKalConfig{nullptr};  // One counted reference; null until bound.
  // Thread-safe by itself; given the store under m_pConfigLock.
  std::unique_ptr<KalConfigObserverHelper> m_pObserverHelper;
};

}  // namespace kalStore
