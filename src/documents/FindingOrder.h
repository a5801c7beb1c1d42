// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "json/TextPlace.h"

namespace kalStore::internal {

/// Puts findings in the order of their offsets in the text, and gives each its line and column.
template <class Finding>
void PlaceFindings(std::string_view text, std::vector<Finding>& findings) {
  std::ranges::stable_sort(findings, {}, &Finding::offset);
  TextPlace place;
  std::size_t passed = 0;
  for (Finding& finding : findings) {
    place.Advance(text.substr(passed, finding.offset - passed));
    passed = finding.offset;
    finding.line = place.line;
    finding.column = place.column;
  }
}

}  // namespace kalStore::internal
