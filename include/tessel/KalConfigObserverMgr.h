// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "tessel/ResultCode.h"
#include "tessel/locking.h"

namespace kalStore {

namespace detail {

/// Some of a name's handlers in the order of registration, as they were at one moment. Keeps them alive.
template <class T>
class HandlerSnapshot {
 public:
  HandlerSnapshot() = default;
  /// Takes those of `handlers` that `isWanted`. Allocates once when there are several.
  template <class IsWanted>
  HandlerSnapshot(const std::list<T>& handlers, IsWanted isWanted)
      : m_size(static_cast<std::size_t>(std::count_if(handlers.begin(), handlers.end(), isWanted))) {
    if (m_size > 1) m_several = std::make_shared<T[]>(m_size);
    std::copy_if(handlers.begin(), handlers.end(), m_size > 1 ? m_several.get() : &m_one, isWanted);
  }

  bool IsEmpty() const { return m_size == 0; }
  std::span<const T> Handlers() const { return {m_size > 1 ? m_several.get() : &m_one, m_size}; }

 private:
  std::size_t m_size = 0;
  T m_one{};                       // The only one,
  std::shared_ptr<T[]> m_several;  // or all of them.
};

}  // namespace detail

/// The subscriptions and bindings of one group: per configuration name a list of handlers in the order of
/// registration. T is a pointer to a handler. A name's entry, once made, stays.
///
/// On cache lines of its own, like atomMap.
///
/// @threads Any operation, from any thread, each under the manager's recursive mutex.
/// @par Example
/// @code{.cpp}
/// KalConfigObserverMgr<std::shared_ptr<int>> handlers;
/// const auto handler = std::make_shared<int>(1);
/// assert(handlers.Subscribe("MaxFps", handler, [](const auto& added) { *added = 2; }) == kResultOk);
/// assert(*handler == 2);
/// assert(handlers.Unsubscribe("MaxFps", handler, [] {}) == kResultOk);
/// assert(handlers.Unsubscribe("MaxFps", handler, [] {}) == kResultNoSuchOrExists);
/// @endcode
template <class T>
class alignas(64) [[gnu::visibility("default")]] KalConfigObserverMgr {
 public:
  /// What is registered for a name.
  struct Entry {
    /// In the order of registration.
    std::list<T> handlers;
    /// Those that a change notifies, for deliveries to share. The first delivery after a change of the list
    /// makes it.
    detail::HandlerSnapshot<T> subscriptions;
    /// Those that compute a value, likewise.
    detail::HandlerSnapshot<T> bindings;

    /// Empties the snapshots; under the lock, after each change of the list.
    void Forget() { subscriptions = bindings = {}; }
  };
  /// By configuration name.
  using Map = std::map<std::string, Entry, std::less<>>;

  /// The lists under their lock, for several steps that must be one.
  /// @threads One, in a scope: the lock is the thread's.
  class TESSEL_LOCKING(scoped_lockable) Locked {
   public:
    /// Locks until the end of the scope.
    /// @param owner  must outlive it
    explicit Locked(KalConfigObserverMgr& owner) TESSEL_LOCKING(acquire_capability(owner.m_mutex))
        : m_lock(owner.m_mutex), m_map(owner.m_map) {}
    ~Locked() TESSEL_LOCKING(release_capability()) = default;
    ///@{
    /// @return The lists, while this object lives.
    Map* operator->() { return &m_map; }
    Map& operator*() { return m_map; }
    ///@}

   private:
    const detail::Lock<std::recursive_mutex> m_lock;
    Map& m_map;
  };

  KalConfigObserverMgr() = default;
  KalConfigObserverMgr(const KalConfigObserverMgr&) = delete;
  KalConfigObserverMgr& operator=(const KalConfigObserverMgr&) = delete;

  /// Appends the handler to the name's list and runs `onAdded` on it, still under the lock.
  /// @param name  not empty
  /// @param handler  not null
  /// @param onAdded  takes the handler; runs only when it was appended
  /// @return kResultOk; kResultBadArgument for an empty name or null handler; kResultNoSuchOrExists when this
  /// handler is in the list.
  template <class OnAdded>
  int Subscribe(const std::string& name, T handler, OnAdded&& onAdded) {
    if (name.empty() || handler == nullptr) return kResultBadArgument;
    Locked names(*this);
    Entry& entry = names->try_emplace(name).first->second;
    if (std::find(entry.handlers.begin(), entry.handlers.end(), handler) != entry.handlers.end()) {
      return kResultNoSuchOrExists;
    }
    entry.handlers.push_back(std::move(handler));
    entry.Forget();
    std::forward<OnAdded>(onAdded)(entry.handlers.back());
    return kResultOk;
  }

  /// Takes the handler out of the name's list and runs `onRemoved`, still under the lock. Allocates nothing.
  /// @param name  any
  /// @param handler  any
  /// @param onRemoved  takes nothing; runs only when it was taken out
  /// @return kResultOk; kResultNoSuchOrExists when it is not in the list.
  template <class OnRemoved>
  int Unsubscribe(std::string_view name, const T& handler, OnRemoved&& onRemoved) {
    Locked names(*this);
    const auto found = names->find(name);
    if (found == names->end()) return kResultNoSuchOrExists;
    Entry& entry = found->second;
    // From the end: the latest is the likeliest to be removed.
    const auto after = std::find(entry.handlers.rbegin(), entry.handlers.rend(), handler);
    if (after == entry.handlers.rend()) return kResultNoSuchOrExists;
    entry.handlers.erase(std::prev(after.base()));
    entry.Forget();
    std::forward<OnRemoved>(onRemoved)();
    return kResultOk;
  }

 private:
  detail::Mutex<std::recursive_mutex> m_mutex;
  Map m_map TESSEL_LOCKING(guarded_by(m_mutex));
};

}  // namespace kalStore
