#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "tessel/export.h"
#include "tessel/json_value.h"

namespace json {

/// Values in a row. Threads: as Value. References and iterators are those of a std::vector.
class TESSEL_API Array {
 public:
  using value_type = Value;
  using iterator = std::vector<Value>::iterator;
  using const_iterator = std::vector<Value>::const_iterator;

  iterator begin() { return m_elements.begin(); }
  iterator end() { return m_elements.end(); }
  const_iterator begin() const { return m_elements.begin(); }
  const_iterator end() const { return m_elements.end(); }
  std::size_t size() const { return m_elements.size(); }
  bool empty() const { return m_elements.empty(); }
  void reserve(std::size_t count) { m_elements.reserve(count); }

  /// REQUIRES: index < size().
  Value& operator[](std::size_t index) { return m_elements[index]; }
  const Value& operator[](std::size_t index) const { return m_elements[index]; }

  void push_back(const Value& value) { m_elements.push_back(value); }
  void push_back(Value&& value) { m_elements.push_back(std::move(value)); }
  template <class... Args>
  Value& emplace_back(Args&&... args) {
    return m_elements.emplace_back(std::forward<Args>(args)...);
  }
  /// Inserts before the element at `index`, or appends when there is none: where the value stands.
  iterator insert(std::size_t index, Value value);
  void Clear() { m_elements.clear(); }

  /// The first element for which element == value, or end().
  iterator find(const Value& value);
  const_iterator find(const Value& value) const;
  bool HasValue(const Value& value) const { return find(value) != end(); }

  /// Same length, and equal elements in order.
  TESSEL_API friend bool operator==(const Array& left, const Array& right);

 private:
  friend class Reader;

  std::vector<Value> m_elements;
};

}  // namespace json
