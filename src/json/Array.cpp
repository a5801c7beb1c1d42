// SPDX-License-Identifier: Apache-2.0
#include "tessel/json_array.h"

#include <algorithm>

#include "json/Parts.h"

namespace json {

using namespace kalStore::internal;

// `other` may be an element's array: the elements live until it has been copied.
Array& Array::operator=(const Array& other) {
  Array copy(other);
  m_elements.swap(copy.m_elements);
  return *this;
}

// The same, and this array may be an element's of `other`.
Array& Array::operator=(Array&& other) noexcept {
  Array taken = TakenFor(this, std::move(other));
  m_elements.swap(taken.m_elements);
  return *this;
}

void Array::push_back(Value&& value) {
  m_elements.push_back(TakenFor(this, std::move(value)));
}

Array::iterator Array::insert(std::size_t index, Value&& value) {
  const auto before = begin() + static_cast<std::ptrdiff_t>(std::min(index, size()));
  return m_elements.insert(before, TakenFor(this, std::move(value)));
}

Array::iterator Array::find(const Value& value) {
  return std::find_if(begin(), end(), [&value](const Value& element) { return element == value; });
}

Array::const_iterator Array::find(const Value& value) const {
  return std::find_if(begin(), end(), [&value](const Value& element) { return element == value; });
}

bool operator==(const Array& left, const Array& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const Value& a, const Value& b) { return a == b; });
}

}  // namespace json
