// SPDX-License-Identifier: Apache-2.0
#include "documents/NearestName.h"

#include <algorithm>
#include <utility>

#include "json/AsciiCase.h"

namespace kalStore::internal {
namespace {

// Costs of one edit. However many letters have the wrong case, one wrong letter costs more.
constexpr std::uint64_t kLetterCost = std::uint64_t{1} << 32;
constexpr std::uint64_t kCaseCost = 1;

std::uint64_t ReplacementCost(char a, char b) {
  if (a == b) return 0;
  return Lowered(a) == Lowered(b) ? kCaseCost : kLetterCost;
}

}  // namespace

NearestName::NearestName(std::string_view string) : m_string(string) {}

void NearestName::Consider(std::string_view known) {
  const std::size_t edits = Edits(known);
  if (m_string.size() > known.size() + edits || known.size() > m_string.size() + edits) return;
  std::uint64_t limit = edits * kLetterCost + (kLetterCost - 1);
  if (!m_nearest.empty()) {
    if (m_nearestDistance == 0) return;
    limit = std::min(limit, m_nearestDistance - 1);
  }
  const std::uint64_t found = distance(known, limit);
  if (found > limit) return;
  m_nearest = known;
  m_nearestDistance = found;
}

bool NearestName::MayBeImproved(std::size_t edits) const {
  return m_nearest.empty() || edits * kLetterCost < m_nearestDistance;
}

// What it costs to turn the string into the name by inserting, removing, replacing and swapping letters; more
// than `limit` when it is more.
std::uint64_t NearestName::distance(std::string_view known, std::uint64_t limit) {
  m_beforeLast.resize(known.size() + 1);
  m_last.resize(known.size() + 1);
  m_row.resize(known.size() + 1);
  for (std::size_t column = 0; column <= known.size(); ++column) m_last[column] = column * kLetterCost;
  for (std::size_t i = 1; i <= m_string.size(); ++i) {
    m_row[0] = i * kLetterCost;
    for (std::size_t j = 1; j <= known.size(); ++j) {
      m_row[j] = std::min({m_last[j] + kLetterCost, m_row[j - 1] + kLetterCost,
                           m_last[j - 1] + ReplacementCost(m_string[i - 1], known[j - 1])});
      if (i > 1 && j > 1) {
        const std::uint64_t swapped =
            ReplacementCost(m_string[i - 1], known[j - 2]) + ReplacementCost(m_string[i - 2], known[j - 1]);
        m_row[j] = std::min(m_row[j], m_beforeLast[j - 2] + kLetterCost + swapped);
      }
    }
    const std::uint64_t least = *std::min_element(m_row.begin(), m_row.end());
    // No later row has less: a swap passes over a row, but costs as much as to leave a letter out there.
    if (least > limit) return least;
    std::swap(m_beforeLast, m_last);
    std::swap(m_last, m_row);
  }
  return m_last[known.size()];
}

}  // namespace kalStore::internal
