#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tessel/export.h"
#include "tessel/json_value.h"

namespace json {

/// Values by key, in the byte order of the keys. Look-ups allocate nothing.
/// Threads: as Value. References to members stay valid until the member is erased.
class TESSEL_API Object {
 public:
  using Map = std::map<std::string, Value, std::less<>>;
  using key_type = Map::key_type;
  using mapped_type = Map::mapped_type;
  using value_type = Map::value_type;
  using iterator = Map::iterator;
  using const_iterator = Map::const_iterator;

  iterator begin() { return m_members.begin(); }
  iterator end() { return m_members.end(); }
  const_iterator begin() const { return m_members.begin(); }
  const_iterator end() const { return m_members.end(); }
  std::size_t size() const { return m_members.size(); }
  bool empty() const { return m_members.empty(); }

  iterator find(std::string_view key) { return m_members.find(key); }
  const_iterator find(std::string_view key) const { return m_members.find(key); }
  bool HasKey(std::string_view key) const { return m_members.contains(key); }

  /// The member of that key; when missing, inserts null and returns it.
  Value& operator[](std::string_view key);
  /// REQUIRES: HasKey(key).
  const Value& operator[](std::string_view key) const { return find(key)->second; }

  /// Inserts the member unless the key is there: where it stands, and whether it was inserted.
  std::pair<iterator, bool> emplace(std::string key, Value value) {
    return m_members.try_emplace(std::move(key), std::move(value));
  }
  std::pair<iterator, bool> insert(value_type member) { return m_members.insert(std::move(member)); }
  /// Inserts the member or replaces its value; in constant time for a key after all others.
  Value& insert_or_assign(std::string key, Value value) {
    return m_members.insert_or_assign(m_members.end(), std::move(key), std::move(value))->second;
  }

  /// Removes the member: how many were removed, 0 or 1.
  std::size_t Erase(std::string_view key);
  void Clear() { m_members.clear(); }

  /// Same keys, and equal values of each.
  TESSEL_API friend bool operator==(const Object& left, const Object& right);

 private:
  friend class Reader;

  Map m_members;
};

}  // namespace json
