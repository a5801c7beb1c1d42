// SPDX-License-Identifier: Apache-2.0
#include "tessel/json_object.h"

#include <algorithm>

#include "json/Parts.h"

namespace json {

using namespace kalStore::internal;

// `other` may be a member's object: the members live until it has been copied.
Object& Object::operator=(const Object& other) {
  Object copy(other);
  m_members.swap(copy.m_members);
  return *this;
}

// The same, and this object may be a member's of `other`.
Object& Object::operator=(Object&& other) noexcept {
  Object taken = TakenFor(this, std::move(other));
  m_members.swap(taken.m_members);
  return *this;
}

std::pair<Object::iterator, bool> Object::emplace(std::string key, Value&& value) {
  return m_members.try_emplace(std::move(key), TakenFor(this, std::move(value)));
}

Value& Object::insert_or_assign(std::string key, Value&& value) {
  return m_members.insert_or_assign(m_members.end(), std::move(key), TakenFor(this, std::move(value)))
      ->second;
}

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
