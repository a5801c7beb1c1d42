#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace kalStore {

/// An ordered map guarded by a recursive mutex of its own; text keys order byte-wise.
///
/// Threads: any operation, from any thread. Each holds the mutex for its whole duration, and its own alone,
/// so that a thread that holds it may call in again. A mutex that cannot be locked throws std::system_error.
template <class K, class V>
class __attribute__((visibility("default"))) atomMap {
 public:
  using Map = std::map<K, V, std::less<>>;

  /// The map under its lock: for several steps that must be one, or look-ups that need no key object.
  class Locked {
   public:
    explicit Locked(atomMap& owner) : m_lock(owner.m_mutex), m_map(owner.m_map) {}
    Map* operator->() { return &m_map; }
    Map& operator*() { return m_map; }

   private:
    std::lock_guard<std::recursive_mutex> m_lock;
    Map& m_map;
  };

  atomMap() = default;
  atomMap(const atomMap&) = delete;
  atomMap& operator=(const atomMap&) = delete;
  virtual ~atomMap() = default;

  /// Copies the key's value to `out` and returns true; without the key returns false and leaves `out` alone.
  bool Get(K key, V& out) {
    Locked map(*this);
    const auto found = map->find(key);
    if (found == map->end()) return false;
    out = found->second;
    return true;
  }

  /// Inserts the key, or overwrites its value.
  void Set(K key, V value) { Locked(*this)->insert_or_assign(std::move(key), std::move(value)); }

  /// Inserts the key and returns true; a key that is there keeps its value, and the result is false.
  bool SetEx(K key, V value) { return Locked(*this)->try_emplace(std::move(key), std::move(value)).second; }

  bool Find(K key) { return Locked(*this)->contains(key); }

 private:
  std::recursive_mutex m_mutex;
  Map m_map;
};

}  // namespace kalStore
