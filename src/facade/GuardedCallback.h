// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "store/WaitClock.h"
#include "tessel/KalConfigEvent.h"

namespace kalStore::internal {

/// How long a removal waits for a run in progress, in all.
inline constexpr long kRemovalCeilingMs = 3000;

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
/// Threads: any operation, from any thread.
class GuardedCallback {
 public:
  /// `isPosted`: runs come from the queue of one thread, and a store's removal does not wait for them.
  GuardedCallback(fnConfigChangedCallBack fn, bool isPosted) : m_fn(std::move(fn)), m_isPosted(isPosted) {}
  GuardedCallback(const GuardedCallback&) = delete;
  GuardedCallback& operator=(const GuardedCallback&) = delete;

  bool IsEmpty() const { return !m_fn; }
  void Run(const KalConfigEvent& event);

  void Pause() { change(State::kOpen, State::kPaused); }
  void Resume() { change(State::kPaused, State::kOpen); }
  bool IsPaused() const { return m_state.load() == State::kPaused; }

  void Close() { m_state.store(State::kClosed); }
  bool IsClosed() const { return m_state.load() == State::kClosed; }

  /// Closes, calls `unsubscribe`, which waits for every run but a posted one, and waits for that too, unless
  /// it is this thread's own. One deadline holds for both waits. Returns what `unsubscribe` returned.
  template <class Unsubscribe>
  std::int32_t Remove(Unsubscribe unsubscribe) {
    const long deadlineMs = CurrentWaitClock().nowMs() + kRemovalCeilingMs;
    Close();
    const std::int32_t result = unsubscribe();
    awaitPostedRun(deadlineMs);
    return result;
  }

 private:
  enum class State : std::uint8_t { kOpen, kPaused, kClosed };

  void change(State from, State to) { m_state.compare_exchange_strong(from, to); }
  void awaitPostedRun(long deadlineMs) const;

  const fnConfigChangedCallBack m_fn;
  const bool m_isPosted;
  std::atomic<State> m_state{State::kOpen};
  // The thread that runs a posted delivery; 0: none. A queue runs one event at a time.
  std::atomic<unsigned long> m_postedThreadId{0};
};

}  // namespace kalStore::internal
