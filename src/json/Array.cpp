#include "tessel/json_array.h"

#include <algorithm>

namespace json {

Array::iterator Array::insert(std::size_t index, Value value) {
  const auto before = begin() + static_cast<std::ptrdiff_t>(std::min(index, size()));
  return m_elements.insert(before, std::move(value));
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
