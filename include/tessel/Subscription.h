// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "tessel/ConfigExecutor.h"
#include "tessel/ConfigRef.h"

namespace kalStore {

namespace internal {
class ConfigRegistration;
}

/// A subscription that removes itself. Where and when its callback runs: IKalConfig::SubscribeConfig().
///
/// A facade has one subscription or binding per name and group. A second one through the same facade is
/// refused, without a trace line: the new Subscription is empty, and RefusalReason() is
/// kResultNoSuchOrExists. Check it, or use a facade of your own. To replace a subscription, assign to it:
/// what was refused is then subscribed in place of the old one. For that, a refused one keeps its callback
/// until it is assigned, removed or destroyed.
///
/// |            | Pause() | Resume()   | Remove(), destruction, move from it |
/// |------------|---------|------------|-------------------------------------|
/// | subscribed | paused  | subscribed | empty                               |
/// | paused     | paused  | subscribed | empty                               |
/// | empty      | empty   | empty      | empty                               |
///
/// While it is paused, changes are dropped: read the value after Resume(). A run in progress at Pause() ends
/// as usual.
///
/// Once removed, the callback is not called any more, however late a delivery comes, handed over and posted
/// ones included. Removal waits for runs in progress on other threads, at most 3000 ms in all. When that wait
/// gives up, a run that has begun may still go on; what it captured is released after it. Inside the callback
/// itself, called directly or handed over, the wait can only give up: call Pause() there, which holds from
/// the next run on, and remove elsewhere; or subscribe with `bAsync`, which removes at once there.
///
/// A facade that is not bound records the subscription and makes it when it binds; it counts as subscribed.
/// Removed before that, it leaves the name free. A second one of the name is not refused then: it replaces
/// the first, whose callback is never called.
///
/// @threads Pause(), Resume() and IsPaused() may be called from any thread, the callback's included, while
/// nobody removes, moves, assigns or destroys the object; everything else is for one owner.
/// @lifetime The store or facade, and the run thread, must outlive it. Its callback may own it: then it ends
/// with the store or facade, and a delivery that was posted to a run thread before may still remove it.
/// @par Example
/// @code{.cpp}
/// KalConfigHelper settings(7);
/// int changes = 0;
/// Subscription subscription(settings, KAL_CONFIG_GROUP_AUDIO, "Bitrate",
///                           [&](const KalConfigEvent&) { ++changes; });
/// settings.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO);
/// subscription.Pause();
/// settings.SetKalConfig("Bitrate", 16000, KAL_CONFIG_GROUP_AUDIO);
/// subscription.Resume();
/// assert(changes == 1);
///
/// Subscription kept = std::move(subscription);
/// kept.Remove();
/// settings.SetKalConfig("Bitrate", 8000, KAL_CONFIG_GROUP_AUDIO);
/// assert(!kept && changes == 1);
/// @endcode
class [[nodiscard, gnu::visibility("default")]] Subscription {
 public:
  /// Empty.
  Subscription() = default;

  /// Subscribes; empty when the store or facade refuses, see SubscribeConfig() there. What the callback
  /// throws at its initial delivery leaves the constructor, and nothing is subscribed.
  /// @param store  a store or a facade
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param fn  notified of the changes; not empty
  /// @param pRunThread  where `fn` runs; not owned
  /// @param bAsync  whether `pRunThread` is posted to rather than waited for
  [[nodiscard]] Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                             fnConfigChangedCallBack fn, ACmThread* pRunThread = nullptr,
                             bool bAsync = false);
  /// The same on an event loop: each delivery, the initial one included, is a task for the executor. `fn`
  /// sees the deliveries' values in the order in which the executor runs them. Once the subscription is
  /// removed, no task reaches `fn` any more; on a thread of the executor, inside `fn` too, the removal does
  /// not wait for itself. On another thread it waits for runs of `fn`, and for calls of the executor, as
  /// described above. An executor of several threads may run `fn` on several at once. A removal inside `fn`
  /// waits for the other runs, but not for calls of the executor: what that refers to must not end with the
  /// removal.
  ///
  /// A task that the executor refuses, or destroys before it has run, is reported by a trace line of level 0;
  /// the setter does not notice it. What `fn` throws is the executor's to handle.
  /// @param store  a store or a facade
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param fn  notified of the changes; not empty
  /// @param executor  where `fn` runs
  /// @par Example
  /// @code{.cpp}
  /// std::vector<std::function<void()>> loop;
  /// const auto executor = [&](std::function<void()> task) { loop.push_back(std::move(task)); };
  /// KalConfigHelper settings(7);
  /// int changes = 0;
  /// const Subscription subscription(
  ///     settings, KAL_CONFIG_GROUP_AUDIO, "Bitrate", [&](const KalConfigEvent&) { ++changes; }, executor);
  /// settings.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO);
  /// assert(changes == 0);
  /// for (const auto& task : loop) task();
  /// assert(changes == 1);
  /// @endcode
  [[nodiscard]] Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                             fnConfigChangedCallBack fn, ConfigExecutor executor);

  /// The source is empty afterwards.
  Subscription(Subscription&&) noexcept = default;
  /// Removes what the target had; the source is empty afterwards. If the source was refused, because the
  /// facade had a subscription of that name, it is subscribed now. What its callback throws at the initial
  /// delivery leaves the assignment, and the target is empty; so it is when the name is still taken. What the
  /// callback captured ends then.
  /// @par Example
  /// @code{.cpp}
  /// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
  /// KalConfigHelper settings(7);
  /// int first = 0, second = 0;
  /// Subscription subscription =
  ///     kMaxFps.Subscribe(settings, [&](const auto& reading) { first = reading.value; });
  /// subscription = kMaxFps.Subscribe(settings, [&](const auto& reading) { second = reading.value; });
  /// kMaxFps.Set(settings, 15);
  /// assert(subscription && first == 0 && second == 15);
  /// @endcode
  Subscription& operator=(Subscription&& other) noexcept(false);
  ~Subscription();

  /// @return Whether it is not empty.
  explicit operator bool() const;

  /// Why it is empty. A name that the facade has subscribed or bound already is the most common reason.
  /// @return kResultNoSuchOrExists for such a name, kResultNotFound for a facade without a default group,
  /// kResultBadArgument for other bad arguments; kResultOk when it was not refused.
  /// @par Example
  /// @code{.cpp}
  /// KalConfigHelper settings(7);
  /// const auto ignore = [](const KalConfigEvent&) {};
  /// const Subscription first(settings, KAL_CONFIG_GROUP_AUDIO, "Bitrate", ignore);
  /// const Subscription second(settings, KAL_CONFIG_GROUP_AUDIO, "Bitrate", ignore);
  /// assert(!second && second.RefusalReason() == kResultNoSuchOrExists);
  /// @endcode
  std::int32_t RefusalReason() const;

  /// Drops changes from now on.
  void Pause();
  /// Ends a pause.
  void Resume();
  /// @return Whether it is paused.
  bool IsPaused() const;

  /// Removes the subscription; waits as described above.
  /// @invalidates What the callback captured by reference may go, unless the wait gave up.
  void Remove();

 private:
  [[gnu::visibility("hidden")]] Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                                             fnConfigChangedCallBack&& fn, ACmThread* pRunThread, bool bAsync,
                                             std::optional<ConfigExecutor>&& executor, const void* caller);

  std::shared_ptr<internal::ConfigRegistration> m_registration;
};

}  // namespace kalStore
