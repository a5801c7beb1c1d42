#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "tessel/ConfigRef.h"

namespace kalStore {

namespace detail {

/// What a subscription shares with its callback.
struct SubscriptionGate {
  std::atomic<bool> open{true};
  std::atomic<int> running{0};  ///< Deliveries that have begun and not ended.
};

/// One subscription, from registration to removal.
class Registration {
 public:
  Registration(ConfigRef store, KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
               ACmThread* pRunThread, bool bAsync)
      : m_store(store),
        m_group(group),
        m_name(name ? name : ""),
        m_pRunThread(pRunThread),
        m_id(store.Subscribe(group, name, guarded(std::move(fn)), pRunThread, bAsync)) {}
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  ~Registration() {
    m_gate->open.store(false);
    if (m_id != 0) {
      m_store.Unsubscribe(m_id);
    } else if (Stands()) {
      m_store.Unsubscribe(m_group, m_name.c_str());
    }
    awaitPosted();
  }

  SubscriptionGate& Gate() const { return *m_gate; }

  /// Made, or recorded by a facade that is not bound: then it has no id, but its callback is kept.
  bool Stands() const { return m_id != 0 || m_gate.use_count() > 1; }

 private:
  fnConfigChangedCallBack guarded(fnConfigChangedCallBack fn) const {
    if (!fn) return fn;
    return [gate = m_gate, fn = std::move(fn)](const KalConfigEvent& event) {
      // Counted first, then asked, against the removal, which closes first and then reads the count: one of
      // the two sees the other. Both are a store followed by a load of another variable, which takes
      // sequential consistency.
      struct Run {
        explicit Run(std::atomic<int>& counter) : m_counter(counter) { m_counter.fetch_add(1); }
        ~Run() { m_counter.fetch_sub(1); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        std::atomic<int>& m_counter;
      };
      const Run run(gate->running);
      if (gate->open.load()) fn(event);
    };
  }

  // The store's removal waits for every delivery but a posted one.
  void awaitPosted() const {
    if (m_pRunThread == nullptr || m_pRunThread->GetThreadId() == GetThreadSelfId()) return;
    constexpr std::chrono::milliseconds kCeiling{3000};
    const auto start = std::chrono::steady_clock::now();
    while (m_gate->running.load() != 0 && std::chrono::steady_clock::now() - start < kCeiling) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  const std::shared_ptr<SubscriptionGate> m_gate = std::make_shared<SubscriptionGate>();
  const ConfigRef m_store;
  const KalConfigGroup m_group;
  const std::string m_name;
  ACmThread* const m_pRunThread;
  const SubscribeId_t m_id;
};

}  // namespace detail

/// A subscription that removes itself. Where and when its callback runs: IKalConfig::SubscribeConfig().
///
/// |        | Pause() | Resume() | Remove(), destruction, assignment |
/// |--------|---------|----------|-----------------------------------|
/// | stands | paused  | stands   | empty                             |
/// | paused | paused  | stands   | empty                             |
/// | empty  | empty   | empty    | empty                             |
///
/// Paused, it drops what it is told: changes made meanwhile are not made up for; read the value after
/// Resume(). A delivery that is running when Pause() is called runs to its end.
///
/// Once removed, the callback does not run any more and will not, posted deliveries included: removal waits
/// for deliveries in progress, at most 3000 ms. Inside its own callback that wait can only give up, unless
/// the delivery was posted: call Pause() there, which takes effect at once, and remove elsewhere.
///
/// A facade that is not bound records the subscription: it stands, and is made when the facade binds. If it
/// is removed before that, its callback never runs, but the facade keeps the name taken until it binds;
/// another subscription of the name before that takes its place.
///
/// @threads Pause(), Resume() and IsPaused() may be called from any thread, the callback's included, while
/// nobody removes, moves or destroys the object; everything else is for one owner.
/// @lifetime The store or facade, and the run thread, must outlive it.
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
class [[nodiscard]] Subscription {
 public:
  /// Empty.
  Subscription() = default;

  /// Subscribes; empty when the store or facade refuses, see SubscribeConfig() there. What the callback
  /// throws at its initial delivery leaves the constructor, and nothing is subscribed.
  /// @param store  a store or a facade
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param fn  told of the changes; not empty
  /// @param pRunThread  where `fn` runs; not owned
  /// @param bAsync  whether `pRunThread` is posted to rather than waited for
  Subscription(ConfigRef store, KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
               ACmThread* pRunThread = nullptr, bool bAsync = false)
      : m_registration(
            std::make_unique<detail::Registration>(store, group, name, std::move(fn), pRunThread, bAsync)) {
    if (!m_registration->Stands()) m_registration.reset();
  }

  /// The source is empty afterwards.
  Subscription(Subscription&&) noexcept = default;
  /// Removes what the target had first; the source is empty afterwards.
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      Remove();
      m_registration = std::move(other.m_registration);
    }
    return *this;
  }
  ~Subscription() = default;

  /// @return Whether it is not empty.
  explicit operator bool() const { return m_registration != nullptr; }

  /// Drops what it is told from now on.
  void Pause() {
    if (m_registration) m_registration->Gate().open.store(false);
  }
  /// Hands on what it is told from now on.
  void Resume() {
    if (m_registration) m_registration->Gate().open.store(true);
  }
  /// @return Whether it is paused.
  bool IsPaused() const { return m_registration && !m_registration->Gate().open.load(); }

  /// Removes the subscription, with the wait told of above.
  /// @invalidates What the callback captured by reference may go, subject to that wait.
  void Remove() { m_registration.reset(); }

 private:
  std::unique_ptr<detail::Registration> m_registration;
};

}  // namespace kalStore
