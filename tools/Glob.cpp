// SPDX-License-Identifier: Apache-2.0
#include "Glob.h"

#include <cstddef>
#include <string>

#include "Ascii.h"

bool IsGlob(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

// Goes back to the last * alone: what an earlier one takes is never worth another try.
bool FitsGlob(std::string_view anyCasePattern, std::string_view anyCaseText) {
  const std::string pattern = LowerCase(anyCasePattern);
  const std::string text = LowerCase(anyCaseText);
  std::size_t p = 0, t = 0;
  std::size_t afterStar = std::string::npos, starTakes = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      afterStar = ++p;
      starTakes = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (afterStar != std::string::npos) {
      p = afterStar;
      t = ++starTakes;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string::npos;
}
