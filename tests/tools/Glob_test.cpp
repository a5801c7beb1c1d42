// SPDX-License-Identifier: Apache-2.0
#include "Glob.h"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>

TEST(Glob, FitsAWholeTextInAnyLetterCase) {
  using namespace std::string_view_literals;
  const std::tuple<std::string_view, std::string_view, bool> rows[] = {
      {"", "", true},
      {"", "a", false},
      {"*", "", true},
      {"**", "a", true},
      {"?", "", false},
      {"AmZ", "aMz", true},
      {"[`", "[@", false},
      {"a", "a\0"sv, false},
      {"a?c", "abc", true},
      {"a?c", "ac", false},
      {"a*", "ba", false},
      {"*a", "ab", false},
      {"*ab*c", "aababbc", true},
      {"*aa*ab", "aab", false},
      {"*aa*ab", "aaaxab", true},
      {"a*b*c", "abcb", false},
  };
  for (const auto& [pattern, text, fits] : rows) EXPECT_EQ(FitsGlob(pattern, text), fits) << pattern << text;
}
