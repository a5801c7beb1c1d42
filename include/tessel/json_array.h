// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "tessel/export.h"
#include "tessel/json_value.h"

namespace json {

/// A sequence of values.
/// @threads As Value.
/// @lifetime References and iterators are those of a std::vector: what changes the length invalidates them.
/// @par Example
/// @code{.cpp}
/// json::Array layers;
/// layers.push_back(1);
/// layers.insert(0, "base");
/// assert(layers.size() == 2 && layers[0] == json::Value("base"));
/// assert(layers.HasValue(1) && layers.find(2) == layers.end());
/// @endcode
class TESSEL_API Array {
 public:
  using value_type = Value;                                   ///< an element
  using iterator = std::vector<Value>::iterator;              ///< of random access
  using const_iterator = std::vector<Value>::const_iterator;  ///< of random access

  ///@{
  /// Copies are deep; moves leave the source empty. Either array may be a part of the other: a part that its
  /// whole is moved into receives a copy.
  Array() = default;
  Array(const Array& other) = default;
  Array(Array&& other) noexcept = default;
  Array& operator=(const Array& other);
  Array& operator=(Array&& other) noexcept;
  ~Array() = default;
  ///@}

  ///@{
  /// @return An iterator to the first element, or behind the last.
  iterator begin() { return m_elements.begin(); }
  iterator end() { return m_elements.end(); }
  const_iterator begin() const { return m_elements.begin(); }
  const_iterator end() const { return m_elements.end(); }
  ///@}
  /// @return How many elements there are.
  std::size_t size() const { return m_elements.size(); }
  /// @return Whether there are none.
  bool empty() const { return m_elements.empty(); }
  /// Makes room, so that growth up to `count` elements moves none.
  /// @param count  elements
  /// @invalidates References and iterators, when room was made.
  void reserve(std::size_t count) { m_elements.reserve(count); }

  ///@{
  /// An element, in place.
  /// @pre index < size()
  /// @param index  from 0
  /// @return The element.
  Value& operator[](std::size_t index) { return m_elements[index]; }
  const Value& operator[](std::size_t index) const { return m_elements[index]; }

  ///@}

  ///@{
  /// Appends a value.
  /// @param value  any; one that this array is a part of is copied
  /// @invalidates References and iterators.
  void push_back(const Value& value) { push_back(Value(value)); }
  void push_back(Value&& value);
  ///@}
  /// Appends a value made of arguments.
  /// @param args  what a Value is made from
  /// @return The value in the array.
  /// @invalidates References and iterators.
  template <class... Args>
  Value& emplace_back(Args&&... args) {
    Value value(std::forward<Args>(args)...);
    push_back(std::move(value));
    return m_elements.back();  // Before `value` ends: this array may be a part of it.
  }
  /// The same as push_back().
  /// @param value  any
  /// @return The value in the array.
  /// @invalidates References and iterators.
  Value& emplace_back(Value&& value) {
    push_back(std::move(value));
    return m_elements.back();
  }
  ///@{
  /// Inserts a value before an element, or appends it when there is none.
  /// @param index  from 0; any
  /// @param value  any; one that this array is a part of is copied
  /// @return The value in the array.
  /// @invalidates References and iterators.
  iterator insert(std::size_t index, const Value& value) { return insert(index, Value(value)); }
  iterator insert(std::size_t index, Value&& value);
  ///@}
  /// Removes all elements.
  /// @invalidates References and iterators.
  void Clear() { m_elements.clear(); }

  ///@{
  /// Looks for a value.
  /// @param value  any
  /// @return The first element for which element == value, or end().
  iterator find(const Value& value);
  const_iterator find(const Value& value) const;
  ///@}
  /// Looks for a value.
  /// @param value  any
  /// @return Whether find() finds it.
  bool HasValue(const Value& value) const { return find(value) != end(); }

  /// Whether both have the same length, and equal elements in order.
  TESSEL_API friend bool operator==(const Array& left, const Array& right);

 private:
  friend class kalStore::internal::TreeBuilder;

  std::vector<Value> m_elements;
};

}  // namespace json
