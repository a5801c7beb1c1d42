// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

/// The least that a store of named values can cost: an ordered map under a recursive mutex.
class FloorStore {
 public:
  bool Get(std::string_view name, std::string& value) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_values.find(name);
    if (found == m_values.end()) return false;
    value = found->second;
    return true;
  }

  /// As the standard library does it: with a std::string of the name, present or not.
  void Set(std::string name, std::string value) {
    const std::lock_guard lock(m_mutex);
    m_values.insert_or_assign(std::move(name), std::move(value));
  }

  /// The same by hand: no std::string for a name that is present.
  void SetInPlace(std::string_view name, std::string value) {
    const std::lock_guard lock(m_mutex);
    const auto place = m_values.lower_bound(name);
    if (place != m_values.end() && place->first == name) {
      place->second = std::move(value);
    } else {
      m_values.emplace_hint(place, name, std::move(value));
    }
  }

 private:
  std::recursive_mutex m_mutex;
  std::map<std::string, std::string, std::less<>> m_values;
};
