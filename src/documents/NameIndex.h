// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kalStore::internal {

/// Known names, asked again and again whether a string is one of them, and which one it is most likely meant
/// to be. The names given must outlive the object.
class NameIndex {
 public:
  void Add(std::string_view name) {
    if (m_known.insert(name).second) m_names.push_back(name);
  }

  bool Has(std::string_view name) const { return m_known.contains(name); }

  /// The name that NearestName finds for the string, "" when none is near. The work spent on it has a bound
  /// for all strings together; "" once it is used up.
  std::string Nearest(std::string_view string);

 private:
  /// How many letters of each kind a name has, whatever their case.
  using LetterCounts = std::array<std::uint8_t, 32>;

  static LetterCounts countLetters(std::string_view string);
  void findDifferences(std::string_view string);

  std::vector<std::string_view> m_names;
  std::unordered_set<std::string_view> m_known;
  std::vector<LetterCounts> m_counts;       // Of m_names, as far as they were needed.
  std::vector<std::uint8_t> m_differences;  // Of each name's counts from those of the current string.
  std::size_t m_work = 0;                   // Names looked at, and letters compared with letters.
};

}  // namespace kalStore::internal
