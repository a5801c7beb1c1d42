// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tessel/export.h"
#include "tessel/json_node_allocator.h"
#include "tessel/json_value.h"

namespace json {

/// Values by key, in the byte order of the keys. Look-ups allocate nothing.
/// @threads As Value.
/// @lifetime References and iterators to members stay valid until the member is erased.
/// @par Example
/// @code{.cpp}
/// json::Object video;
/// video["width"] = 640;
/// assert(!video.emplace("width", 1280).second);  // it is there
/// video.insert_or_assign("height", 360);
/// assert(video.size() == 2 && video.begin()->first == "height");
/// assert(video.Erase("width") == 1 && !video.HasKey("width"));
/// @endcode
class TESSEL_API Object {
 public:
  /// What holds the members.
  using Map =
      std::map<std::string, Value, std::less<>, detail::NodeAllocator<std::pair<const std::string, Value>>>;
  using key_type = Map::key_type;              ///< any bytes
  using mapped_type = Map::mapped_type;        ///< a member's value
  using value_type = Map::value_type;          ///< a member
  using iterator = Map::iterator;              ///< in the order of the keys
  using const_iterator = Map::const_iterator;  ///< in the order of the keys

  ///@{
  /// Copies are deep; moves leave the source empty. Either object may be a part of the other: a part that its
  /// whole is moved into receives a copy.
  Object() = default;
  Object(const Object& other) = default;
  Object(Object&& other) noexcept = default;
  Object& operator=(const Object& other);
  Object& operator=(Object&& other) noexcept;
  ~Object() = default;
  ///@}

  ///@{
  /// @return An iterator to the first member, or behind the last.
  iterator begin() { return m_members.begin(); }
  iterator end() { return m_members.end(); }
  const_iterator begin() const { return m_members.begin(); }
  const_iterator end() const { return m_members.end(); }
  ///@}
  /// @return How many members there are.
  std::size_t size() const { return m_members.size(); }
  /// @return Whether there are none.
  bool empty() const { return m_members.empty(); }

  ///@{
  /// Looks for a member.
  /// @param key  any
  /// @return The member, or end().
  iterator find(std::string_view key) { return m_members.find(key); }
  const_iterator find(std::string_view key) const { return m_members.find(key); }
  ///@}
  /// Looks for a member.
  /// @param key  any
  /// @return Whether there is one.
  bool HasKey(std::string_view key) const { return m_members.contains(key); }

  /// A member's value, in place; when missing, inserts null.
  /// @param key  any
  /// @return The value.
  Value& operator[](std::string_view key);
  /// A member's value.
  /// @pre HasKey(key)
  /// @param key  the member's
  /// @return The value.
  const Value& operator[](std::string_view key) const { return find(key)->second; }

  ///@{
  /// Inserts a member unless the key is there.
  /// @param key  any
  /// @param value  any; one that this object is a part of is copied
  /// @return The member, and whether it was inserted.
  std::pair<iterator, bool> emplace(std::string key, const Value& value) {
    return emplace(std::move(key), Value(value));
  }
  std::pair<iterator, bool> emplace(std::string key, Value&& value);
  ///@}
  /// The same.
  /// @param member  key and value
  /// @return The member, and whether it was inserted.
  std::pair<iterator, bool> insert(value_type member) {
    return emplace(member.first, std::move(member.second));
  }
  ///@{
  /// Inserts a member or replaces its value; in constant time for a key after all others.
  /// @param key  any
  /// @param value  any; one that this object is a part of is copied
  /// @return The value in the object.
  Value& insert_or_assign(std::string key, const Value& value) {
    return insert_or_assign(std::move(key), Value(value));
  }
  Value& insert_or_assign(std::string key, Value&& value);
  ///@}

  /// Removes a member.
  /// @param key  any
  /// @return How many were removed, 0 or 1.
  /// @invalidates References and iterators to it.
  std::size_t Erase(std::string_view key);
  /// Removes all members.
  /// @invalidates References and iterators.
  void Clear() { m_members.clear(); }

  /// Whether both have the same keys, and equal values of each.
  TESSEL_API friend bool operator==(const Object& left, const Object& right);

 private:
  friend class kalStore::internal::TreeBuilder;

  Map m_members;
};

}  // namespace json
