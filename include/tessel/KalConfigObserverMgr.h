// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tessel/ResultCode.h"
#include "tessel/locking.h"

namespace kalStore {

/// The subscriptions and bindings of one group: per configuration name a list of handlers. T is a pointer
/// to a handler. A name's entry, once made, stays.
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
    /// The binding, if there is one, for reads to find at once; then the subscriptions in the order of
    /// registration.
    std::vector<T> handlers;
    /// The subscriptions, when they are several, for deliveries to share. The first delivery after a change
    /// of the list makes it.
    std::shared_ptr<T[]> shared;

    /// Puts a handler before `place`.
    void Insert(typename std::vector<T>::const_iterator place, T handler) {
      handlers.insert(place, std::move(handler));
      shared.reset();
    }
    /// Takes a handler out. Allocates nothing.
    void Erase(typename std::vector<T>::const_iterator place) {
      handlers.erase(place);
      shared.reset();
    }
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
    entry.Insert(entry.handlers.end(), handler);
    std::forward<OnAdded>(onAdded)(handler);  // Not that of the list, which onAdded may add to.
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
    entry.Erase(std::prev(after.base()));
    std::forward<OnRemoved>(onRemoved)();
    return kResultOk;
  }

 private:
  detail::Mutex<std::recursive_mutex> m_mutex;
  Map m_map TESSEL_LOCKING(guarded_by(m_mutex));
};

}  // namespace kalStore
