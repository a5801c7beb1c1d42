// SPDX-License-Identifier: Apache-2.0
#include "Nearest.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "Ascii.h"
#include "Printable.h"

namespace {

// How many letters must be inserted, removed, replaced or swapped with the next one to turn `a` into `b`.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      std::size_t& cell = table[i][j];
      cell = std::max(i, j);
      if (i == 0 || j == 0) continue;
      cell = std::min(
          {table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        cell = std::min(cell, table[i - 2][j - 2] + 1);
      }
    }
  }
  return table[a.size()][b.size()];
}

}  // namespace

std::string Nearest(std::string_view text, std::span<const std::string> known) {
  std::string nearest;
  std::size_t least = std::numeric_limits<std::size_t>::max();
  for (const std::string& name : known) {
    const std::size_t edits = std::max<std::size_t>(1, name.size() / 3);
    // Also keeps the table small, however long the string is.
    if (text.size() > name.size() + edits) continue;
    const std::size_t distance = Distance(LowerCase(text), LowerCase(name));
    if (distance > edits || distance >= least) continue;
    nearest = name;
    least = distance;
  }
  return nearest;
}

std::string DidYouMean(std::string_view text, std::span<const std::string> known) {
  const std::string nearest = Nearest(text, known);
  return nearest.empty() ? "" : " (did you mean " + Quoted(nearest) + "?)";
}
