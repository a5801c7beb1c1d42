// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "tessel/locking.h"

namespace kalStore {

/// An ordered map guarded by a recursive mutex of its own; string keys are ordered byte by byte.
///
/// @threads Any operation, from any thread. Each holds the mutex for its whole duration, and no other: a
/// thread that holds it may call in again. A mutex that cannot be locked throws std::system_error.
/// On cache lines of its own, so that the threads that use one map do not slow those that use the next.
/// @par Example
/// @code{.cpp}
/// atomMap<std::string, int> limits;
/// limits.Set("MaxFps", 30);
/// assert(!limits.SetEx("MaxFps", 60));  // present already
/// int fps = 0;
/// assert(limits.Get("MaxFps", fps) && fps == 30);
/// {
///   atomMap<std::string, int>::Locked map(limits);
///   for (auto& [name, limit] : *map) limit /= 2;
/// }
/// assert(limits.Get("MaxFps", fps) && fps == 15);
/// @endcode
template <class K, class V>
class alignas(64) [[gnu::visibility("default")]] atomMap {
 public:
  /// What it guards.
  using Map = std::map<K, V, std::less<>>;

  /// The map under its lock: for several steps that must be one, or look-ups that need no key object.
  /// @threads One, in a scope: the lock is the thread's.
  class TESSEL_LOCKING(scoped_lockable) Locked {
   public:
    /// Locks until the end of the scope.
    /// @param owner  must outlive it
    explicit Locked(atomMap& owner) TESSEL_LOCKING(acquire_capability(owner.m_mutex))
        : m_lock(owner.m_mutex), m_map(owner.m_map) {}
    ~Locked() TESSEL_LOCKING(release_capability()) = default;
    ///@{
    /// @return The map, while this object lives.
    Map* operator->() { return &m_map; }
    Map& operator*() { return m_map; }
    ///@}

   private:
    const detail::Lock<std::recursive_mutex> m_lock;
    Map& m_map;
  };

  atomMap() = default;
  atomMap(const atomMap&) = delete;
  atomMap& operator=(const atomMap&) = delete;
  virtual ~atomMap() = default;

  /// Reads a value.
  /// @param key  any
  /// @param out  receives a copy; untouched without the key
  /// @return Whether the key is there.
  bool Get(K key, V& out) {
    Locked map(*this);
    const auto found = map->find(key);
    if (found == map->end()) return false;
    out = found->second;
    return true;
  }

  /// Inserts the key, or overwrites its value.
  /// @param key  any
  /// @param value  any
  void Set(K key, V value) { Locked(*this)->insert_or_assign(std::move(key), std::move(value)); }

  /// Inserts the key; one that is there keeps its value.
  /// @param key  any
  /// @param value  any
  /// @return Whether the key was inserted.
  bool SetEx(K key, V value) { return Locked(*this)->try_emplace(std::move(key), std::move(value)).second; }

  /// @return Whether the key is there.
  bool Find(K key) { return Locked(*this)->contains(key); }

 private:
  detail::Mutex<std::recursive_mutex> m_mutex;
  Map m_map TESSEL_LOCKING(guarded_by(m_mutex));
};

}  // namespace kalStore
