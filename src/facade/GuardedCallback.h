// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <utility>

#include "store/HandleCallback.h"
#include "store/OfComponent.h"
#include "store/UnwaitedRemoval.h"
#include "store/WaitClock.h"
#include "tessel/KalConfigEvent.h"

namespace kalStore::internal {

/// The change callback of a subscription, which its owner can shut off. The function objects that a store,
/// its deliveries and the queue of a thread hold share one: once it is removed, none of them reaches user
/// code, however late it is called.
///
/// |         | Pause() | Resume() | Close() | Run()              |
/// |---------|---------|----------|---------|--------------------|
/// | open    | paused  | open     | closed  | calls the callback |
/// | paused  | paused  | open     | closed  | does nothing       |
/// | closed  | closed  | closed   | closed  | does nothing       |
///
/// Threads: any operation but DeliveredByExecutor(), from any thread.
class GuardedCallback final : public HandleCallback {
 public:
  /// `isPosted`: runs come from a queue, and a store's removal does not wait for them.
  GuardedCallback(fnConfigChangedCallBack&& fn, bool isPosted)
      : m_fn(std::move(fn)), m_delivery(isPosted ? Delivery::kPosted : Delivery::kByStore) {}
  GuardedCallback(const GuardedCallback&) = delete;
  GuardedCallback& operator=(const GuardedCallback&) = delete;

  /// Before the first delivery: runs come from an executor, on several threads at once or while the setter
  /// waits.
  void DeliveredByExecutor() { m_delivery = Delivery::kByExecutor; }

  bool IsEmpty() const { return !*m_fn; }
  void Run(const KalConfigEvent& event) override;

  void Pause() { change(State::kOpen, State::kPaused); }
  void Resume() { change(State::kPaused, State::kOpen); }
  bool IsOpen() const { return m_state.load() == State::kOpen; }
  bool IsPaused() const { return m_state.load() == State::kPaused; }

  /// How many runs from a queue or an executor are in progress on this thread.
  int RunsOnThisThread() const;

  void LoseStore() override { m_hasStore.store(false, std::memory_order_relaxed); }
  /// Whether there is still something to unsubscribe from. Relaxed: who asks while the store ends on another
  /// thread uses it too late in any case.
  bool HasStore() const { return m_hasStore.load(std::memory_order_relaxed); }

  void Close() { m_state.store(State::kClosed); }
  bool IsClosed() const { return m_state.load() == State::kClosed; }

  /// Closes, calls `unsubscribe`, which waits for every run but a posted one, and waits for those too, unless
  /// they are this thread's own. One limit holds for both waits. In a run from an executor `unsubscribe` does
  /// not wait: the executor may have begun the run in a delivery that ends only after it. Returns what
  /// `unsubscribe` returned.
  template <class Unsubscribe>
  std::int32_t Remove(Unsubscribe unsubscribe) {
    const long startMs = CurrentWaitClock().nowMs();
    Close();
    std::optional<UnwaitedRemoval> unwaited;
    if (m_delivery == Delivery::kByExecutor && RunsOnThisThread() > 0) unwaited.emplace();
    const std::int32_t result = unsubscribe();
    awaitPostedRuns(startMs);
    return result;
  }

 private:
  enum class State : std::uint8_t { kOpen, kPaused, kClosed };
  enum class Delivery : std::uint8_t { kByStore, kPosted, kByExecutor };
  class PostedRun;

  void change(State from, State to) { m_state.compare_exchange_strong(from, to); }
  void awaitPostedRuns(long startMs) const;

  const OfComponent<fnConfigChangedCallBack> m_fn;
  Delivery m_delivery;
  std::atomic<State> m_state{State::kOpen};
  std::atomic<bool> m_hasStore{true};
  std::atomic<int> m_postedRuns{0};  // In progress, on whatever thread.
};

}  // namespace kalStore::internal
