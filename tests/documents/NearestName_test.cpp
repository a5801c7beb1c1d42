// SPDX-License-Identifier: Apache-2.0
#include "documents/NearestName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "documents/NameIndex.h"
#include "json/AsciiCase.h"

namespace kalStore::internal {
namespace {

constexpr std::size_t kLetter = 100;

std::size_t Replaced(char a, char b) {
  if (a == b) return 0;
  return Lowered(a) == Lowered(b) ? 1 : kLetter;
}

// As the wrong letters are defined: what it costs to turn one string into the other, from their ends.
std::size_t Distance(std::string_view a, std::string_view b) {
  if (a.empty() || b.empty()) return kLetter * (a.size() + b.size());
  const auto shorter = [](std::string_view string, std::size_t by = 1) {
    return string.substr(0, string.size() - by);
  };
  std::size_t least = std::min({kLetter + Distance(shorter(a), b), kLetter + Distance(a, shorter(b)),
                                Replaced(a.back(), b.back()) + Distance(shorter(a), shorter(b))});
  if (a.size() > 1 && b.size() > 1) {
    least = std::min(least, kLetter + Replaced(a.back(), b[b.size() - 2]) +
                                Replaced(a[a.size() - 2], b.back()) + Distance(shorter(a, 2), shorter(b, 2)));
  }
  return least;
}

std::vector<std::string> StringsOf(std::string_view letters, std::size_t longest) {
  std::vector<std::string> strings = {""};
  for (std::size_t i = 0; strings[i].size() < longest; ++i) {
    for (const char letter : letters) strings.push_back(strings[i] + letter);
  }
  return strings;
}

TEST(NearestName, IsNearWithOneWrongLetterOfEachThreeAndWithOneOfFewer) {
  const std::vector<std::string> strings = StringsOf("abA", 4);
  for (const std::string& known : strings) {
    if (known.empty()) continue;
    for (const std::string& string : strings) {
      // What lies before it in memory is none of its letters.
      const std::string text = "a" + string;
      NearestName nearest(std::string_view(text).substr(1));
      nearest.Consider(known);
      EXPECT_EQ(nearest.Result(), Distance(string, known) / kLetter <= 1 ? known : "") << string;
    }
  }
  for (const char* string : {"abcdef", "bacdef", "bcdef", "xbcdey", "bacdfe", "bcdefa", "xbcxex", "bdcfea"}) {
    NearestName nearest(string);
    nearest.Consider("abcdef");
    EXPECT_EQ(nearest.Result(), Distance(string, "abcdef") / kLetter <= 2 ? "abcdef" : "") << string;
  }
}

// A space counts like any other letter.
TEST(NameIndex, PrefersOfEquallyNearNamesTheOneWithTheSameLetters) {
  NameIndex names;
  for (const char* name : {"my  name", "ym name"}) names.Add(name);
  EXPECT_EQ(names.Nearest("my name"), "ym name");
}

TEST(NameIndex, LooksForNearNamesUntilThatHasTakenTooLong) {
  const std::string known(3000, 'n');
  NameIndex names;
  names.Add(known);
  EXPECT_EQ(names.Nearest("m" + known), known);
  EXPECT_EQ(names.Nearest("m" + known), "");
}

}  // namespace
}  // namespace kalStore::internal
