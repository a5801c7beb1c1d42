// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalStore::internal {

/// Finds, among known names, the one that a string is most likely meant to be: the one with the fewest wrong
/// letters, of those the one with the fewest letters in the wrong case. The strings given must outlive the
/// object.
class NearestName {
 public:
  explicit NearestName(std::string_view string);

  /// How many letters of a string may be wrong for it to be meant as the name.
  static std::size_t Edits(std::string_view known) { return std::max<std::size_t>(1, known.size() / 3); }

  void Consider(std::string_view known);

  /// Whether a name with so many wrong letters, or more, may be nearer than all that were considered.
  bool MayBeImproved(std::size_t edits) const;

  /// The nearest of the names considered, the first of equally near ones; empty when none is near.
  std::string Result() const { return std::string(m_nearest); }

 private:
  std::uint64_t distance(std::string_view known, std::uint64_t limit);

  const std::string_view m_string;
  std::string_view m_nearest;
  std::uint64_t m_nearestDistance = 0;
  // Rows of the distance table, kept for their memory.
  std::vector<std::uint64_t> m_beforeLast;
  std::vector<std::uint64_t> m_last;
  std::vector<std::uint64_t> m_row;
};

}  // namespace kalStore::internal
