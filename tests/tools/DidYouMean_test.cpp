// SPDX-License-Identifier: Apache-2.0
#include "DidYouMean.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

const std::vector<std::string> kNames = {"Audio", "Video", "VideoSlide", "Transmission"};

TEST(DidYouMean, ForgivesAThirdOfTheLettersAndAnyCase) {
  const std::pair<std::string, std::string> rows[] = {{"Audio", "Audio"},
                                                      {"AUDIO", "Audio"},
                                                      {"Audoi", "Audio"},
                                                      {"aUDOI", "Audio"},
                                                      {"Adio", "Audio"},
                                                      {"Auudio", "Audio"},
                                                      {"Videp", "Video"},
                                                      {"Vidoe", "Video"},
                                                      {"videoslid", "VideoSlide"},
                                                      {"VIEDOSILDE", "VideoSlide"},
                                                      {"Transmision", "Transmission"}};
  for (const auto& [text, nearest] : rows)
    EXPECT_EQ(DidYouMean(text, kNames), " (did you mean \"" + nearest + "\"?)") << text;
}

TEST(DidYouMean, SuggestsNothingThatIsFarOff) {
  for (const std::string_view text : {"Transxxxxxxx", "Hardware", "Colours", "", "Au"})
    EXPECT_EQ(DidYouMean(text, kNames), "") << text;
  EXPECT_EQ(DidYouMean(std::string(1000, 'A'), kNames), "");
}

TEST(DidYouMean, PrefersTheNearerAndThenTheFirst) {
  const std::vector<std::string> names = {"abcdefgh", "abcdefgx", "abcdefgi", "abcdefgX"};
  EXPECT_EQ(DidYouMean("abcdefgx", names), " (did you mean \"abcdefgx\"?)");
  EXPECT_EQ(DidYouMean("abcdefgX", names), " (did you mean \"abcdefgX\"?)");
  EXPECT_EQ(DidYouMean("abcdefgz", names), " (did you mean \"abcdefgh\"?)");
}

}  // namespace
