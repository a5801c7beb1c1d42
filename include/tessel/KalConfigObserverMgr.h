#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "tessel/ResultCode.h"

namespace kalStore {

/// The subscriptions and bindings of one group: per configuration name a list of handlers in the order of
/// registration. T is a pointer to a handler. A name's entry, once made, stays.
///
/// Threads: any operation, from any thread, each under the manager's recursive mutex.
template <class T>
class __attribute__((visibility("default"))) KalConfigObserverMgr {
 public:
  using Handlers = std::list<T>;
  using Map = std::map<std::string, Handlers, std::less<>>;

  /// The lists under their lock, for several steps that must be one.
  class Locked {
   public:
    explicit Locked(KalConfigObserverMgr& owner) : m_lock(owner.m_mutex), m_map(owner.m_map) {}
    Map* operator->() { return &m_map; }

   private:
    std::lock_guard<std::recursive_mutex> m_lock;
    Map& m_map;
  };

  KalConfigObserverMgr() = default;
  KalConfigObserverMgr(const KalConfigObserverMgr&) = delete;
  KalConfigObserverMgr& operator=(const KalConfigObserverMgr&) = delete;

  /// Appends the handler to the name's list and runs `onAdded` on it, still under the lock. 0;
  /// 0x46004003 for an empty name or null handler, 0x46000001 when this very handler is in the list.
  template <class OnAdded>
  int Subscribe(std::string name, T handler, OnAdded&& onAdded) {
    if (name.empty() || handler == nullptr) return kResultBadArgument;
    Locked names(*this);
    Handlers& handlers = names->try_emplace(std::move(name)).first->second;
    if (std::find(handlers.begin(), handlers.end(), handler) != handlers.end()) return kResultNoSuchOrExists;
    handlers.push_back(std::move(handler));
    std::forward<OnAdded>(onAdded)(handlers.back());
    return kResultOk;
  }

  /// Takes the handler out of the name's list and runs `onRemoved`, still under the lock. 0, or 0x46000001
  /// when it is not in the list. Allocates nothing.
  template <class OnRemoved>
  int Unsubscribe(std::string_view name, const T& handler, OnRemoved&& onRemoved) {
    Locked names(*this);
    const auto found = names->find(name);
    if (found == names->end()) return kResultNoSuchOrExists;
    Handlers& handlers = found->second;
    const auto position = std::find(handlers.begin(), handlers.end(), handler);
    if (position == handlers.end()) return kResultNoSuchOrExists;
    handlers.erase(position);
    std::forward<OnRemoved>(onRemoved)();
    return kResultOk;
  }

 private:
  std::recursive_mutex m_mutex;
  Map m_map;
};

}  // namespace kalStore
