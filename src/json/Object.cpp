#include "tessel/json_object.h"

#include <algorithm>

namespace json {

Value& Object::operator[](std::string_view key) {
  const auto place = m_members.lower_bound(key);
  if (place != m_members.end() && place->first == key) return place->second;
  return m_members.try_emplace(place, std::string(key))->second;
}

std::size_t Object::Erase(std::string_view key) {
  const auto found = m_members.find(key);
  if (found == m_members.end()) return 0;
  m_members.erase(found);
  return 1;
}

bool operator==(const Object& left, const Object& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const auto& a, const auto& b) { return a.first == b.first && a.second == b.second; });
}

}  // namespace json
