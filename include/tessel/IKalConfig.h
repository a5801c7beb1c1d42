// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/KalConfigEvent.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/ResultCode.h"
#include "tessel/export.h"
#include "util/ACmThread.h"

namespace kalStore {

/// The settings of one call: named values in thirteen groups, with subscriptions to their changes and
/// bindings that compute a value when it is read.
///
/// Names are NUL-terminated strings of any bytes and must not be empty. Groups above 12 are refused. No
/// operation throws for bad input.
///
/// A failed allocation leaves the operation as std::bad_alloc, and the store usable: a subscription or
/// binding was not made, an export keeps the last text, a set or import stored whole values or none, and may
/// have stored one without notifying every subscriber. Removals allocate nothing.
///
/// @threads Any operation, from any thread. Groups never wait for each other. No lock of the store is held
/// while a callback runs, while what it captured ends, or while a line is traced: a callback and a trace sink
/// may read, set, subscribe, remove, import and export on the same store.
/// @lifetime Obtained from CreateKalConfig() and valid until released with ReleaseKalConfig(). A callback
/// may end the store, except during an import: the operation still notifies the other subscribers of its
/// change and returns as usual. What callbacks captured ends with the store and may use it then, for example
/// to remove other subscriptions. What the callbacks of that change captured ends after it, and must not use
/// the store.
/// @par Example
/// @code{.cpp}
/// IKalConfig* store = nullptr;
/// CreateKalConfig(7, &store);
/// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
/// ConfigData value;
/// assert(store->GetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", value) == kResultOk);
/// assert(value.ToInt() == 30);
/// ReleaseKalConfig(store);
/// CleanUpKalConfig(7);
/// @endcode
class TESSEL_API IKalConfig {
 public:
  /// Notifies `fn` of every change of the name, and at once of its current value if there is one.
  ///
  /// | pRunThread | bAsync | where `fn` runs                                                            |
  /// |------------|--------|----------------------------------------------------------------------------|
  /// | null       | any    | on the setter's thread, before the set returns                             |
  /// | given      | false  | on pRunThread, which the setter waits for; from pRunThread itself, at once |
  /// | given      | true   | on pRunThread, later, in the order of the sets; also from pRunThread       |
  ///
  /// A run thread without an event queue drops the event. The initial delivery takes the same way, with the
  /// subscriber in the setter's place, before SubscribeConfig returns. What is posted or handed over carries
  /// a copy of `fn` of its own: what that changes in itself is lost with it; what it refers to is shared.
  ///
  /// Deliveries of sets made at once by several threads may overlap and arrive in either order. A callback
  /// that sets its own value is called again, recursively. Handing over deadlocks when pRunThread
  /// itself waits for the setter: choose bAsync there.
  ///
  /// What `fn` throws: called directly, the other subscribers are notified first, then the first such
  /// exception leaves the set. From the initial delivery it leaves SubscribeConfig(), and the subscription is
  /// removed again as by UnsubscribeConfig(): a change that another thread made meanwhile may still be
  /// notified afterwards where that says so. Posted or handed over, it is caught by the run thread's queue,
  /// traced, and does not reach the setter.
  ///
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @param fn  notified of the changes; not empty
  /// @param pRunThread  where `fn` runs, see the table; not owned, must outlive the subscription
  /// @param bAsync  whether `pRunThread` is posted to rather than waited for
  /// @return The subscription's id; 0 for a group above 12, a null or empty name, or an empty `fn`.
  /// @par Example
  /// @code{.cpp}
  /// CallStore store(7, CallStore::kEndsCall);
  /// int fps = 0;
  /// const SubscribeId_t id = store->SubscribeConfig(
  ///     KAL_CONFIG_GROUP_VIDEO, "MaxFps",
  ///     [&](const KalConfigEvent& change) { fps = change.m_newValue.ToInt(); }, nullptr, false);
  /// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
  /// assert(fps == 15);
  /// store->UnsubscribeConfig(id);
  /// @endcode
  virtual SubscribeId_t SubscribeConfig(KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                                        ACmThread* pRunThread, bool bAsync) = 0;

  /// Has `fn` compute the name's value whenever it is read with GetDynamicConfig(), on the reader's thread.
  /// What `fn` throws leaves that read.
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @param fn  returns the value, given the reader's default; not empty
  /// @return The binding's id; 0 for bad arguments as in SubscribeConfig(), and when the name is bound
  /// already.
  /// @par Example
  /// @code{.cpp}
  /// CallStore store(7, CallStore::kEndsCall);
  /// store->BindConfig(KAL_CONFIG_GROUP_METRICS, "Load",
  ///                   [](const KalConfigEvent& read) { return ConfigData(read.m_defaultValue.ToInt() + 1);
  ///                   });
  /// ConfigData load;
  /// assert(store->GetDynamicConfig(KAL_CONFIG_GROUP_METRICS, "Load", load, 41) == kResultOk);
  /// assert(load.ToInt() == 42);
  /// @endcode
  virtual SubscribeId_t BindConfig(KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn) = 0;

  /// Removes a subscription or binding. Changes made after the call do not notify it.
  ///
  /// Waits for deliveries in progress, at most 3000 ms. After a wait that ended in time, the callback does
  /// not run any more and what it captured has ended, except what was posted before: that still runs on its
  /// thread, with a copy of the callback.
  ///
  /// A wait that gave up leaves the callback in place, and with it all that it captured: deliveries that were
  /// announced before still call it after UnsubscribeConfig() has returned. It gives up in any case where
  /// such a delivery waits for the calling thread: inside the subscription's own callback; inside that of
  /// another subscriber that the same change notifies before it; inside callbacks that sets in one of these
  /// run, of whatever name; on its run thread, while a setter waits there to hand over. Remove on another
  /// thread, or subscribe with bAsync; where neither is possible, let the callback own what it uses.
  /// @param id  as SubscribeConfig() or BindConfig() returned it
  /// @return kResultOk, also when the wait gave up; kResultNotFound when the id is not registered.
  /// @invalidates The id, and what the callback captured by reference may go, subject to the wait above.
  virtual std::int32_t UnsubscribeConfig(SubscribeId_t id) = 0;

  /// Stores a value and notifies the name's subscribers.
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @param value  valid
  /// @param bForceNotify  notifies of an equal value, too
  /// @param bTransient  announces the value without storing it, and removes what was stored
  /// @return kResultOk when a subscriber was notified, kResultNobody when there was none, kResultUnchanged
  /// when the value equals the stored one and `bForceNotify` is false. In all three the value is stored; a
  /// transient one is not, and the name has no value then. kResultBadArgument for a bad argument or an
  /// invalid value: nothing changed.
  virtual std::int32_t SetKalConfig(KalConfigGroup group, const char* name, ConfigData value,
                                    bool bForceNotify, bool bTransient) = 0;

  /// Reads a stored value.
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @param value  receives a copy
  /// @return kResultOk; kResultNotFound when there is none, with `value` made invalid; kResultBadArgument,
  /// with `value` untouched.
  virtual std::int32_t GetKalConfig(KalConfigGroup group, const char* name, ConfigData& value) = 0;

  /// Asks the name's binding, see BindConfig(). Stored values are not consulted.
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @param value  receives what the binding returned
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return kResultOk; kResultNobody without a binding and kResultBadArgument, both with `value` untouched.
  virtual std::int32_t GetDynamicConfig(KalConfigGroup group, const char* name, ConfigData& value,
                                        ConfigData defaultValue) = 0;

  /// Removes a stored value and notifies nobody.
  /// @param group  0 to 12
  /// @param name  not null, not empty
  /// @return kResultOk, also when there was none; kResultBadArgument.
  virtual std::int32_t RemoveKalConfig(KalConfigGroup group, const char* name) = 0;

  /// Removes all values of the group and notifies nobody; subscriptions and bindings stay.
  /// @param group  0 to 12
  /// @return kResultOk; kResultBadArgument.
  virtual std::int32_t RemoveKalConfigByGroup(KalConfigGroup group) = 0;

  /// Writes the stored values of groups as a settings document, see ApplyKalConfigs(). Consistent within each
  /// group; the groups are copied from 0 upward. A value that contains a zero byte is written up to it:
  /// importing the document changes that value.
  /// @param groups  bit g selects group g; bits 13 and above are ignored
  /// @return The text, never null. It lives in the store until its next DumpKalConfigs(), from whatever
  /// thread, or its end; do not free it.
  /// @invalidates The text that the previous DumpKalConfigs() returned.
  /// @par Example
  /// @code{.cpp}
  /// CallStore store(7, CallStore::kEndsCall);
  /// store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Bitrate", 32000, false, false);
  /// const std::string text = store->DumpKalConfigs(1U << KAL_CONFIG_GROUP_AUDIO);
  /// assert(text == R"({"Audio":[{"key":"Bitrate","value":"32000"}]})");
  /// store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_AUDIO);
  /// assert(store->ApplyKalConfigs(text.c_str()) == kResultOk);
  /// assert(store->DumpKalConfigs(1U << KAL_CONFIG_GROUP_AUDIO) == text);
  /// @endcode
  virtual const char* DumpKalConfigs(ConfigMultGroup_t groups) = 0;

  /// Sets every entry of a settings document, in group name order and then in document order, as
  /// SetKalConfig() without force would. Unknown groups, entries without a string "key" and "value" and
  /// refused values are skipped; CheckSettings() reports which. What a callback throws leaves the import; the
  /// entries after it are not set.
  ///
  /// A document is an object of group names, each an array of objects with "key" and "value", both strings:
  /// {"Audio":[{"key":"Bitrate","value":"32000"}]}
  /// @param szJsonConfig  the document's text, up to its NUL
  /// @return kResultOk, also when entries were skipped; kResultNotFound when the text is null or no JSON
  /// object, with nothing stored.
  virtual std::int32_t ApplyKalConfigs(const char* szJsonConfig) = 0;

  virtual ~IKalConfig() = default;
};

}  // namespace kalStore
