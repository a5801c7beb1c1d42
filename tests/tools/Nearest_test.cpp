// SPDX-License-Identifier: Apache-2.0
#include "Nearest.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

const std::vector<std::string> kNames = {"Audio", "Video", "VideoSlide", "Transmission"};

TEST(Nearest, ForgivesAThirdOfTheLettersAndAnyCase) {
  const std::pair<std::string, std::string> rows[] = {{"Audio", "Audio"},
                                                      {"AUDIO", "Audio"},
                                                      {"Audoi", "Audio"},
                                                      {"Adio", "Audio"},
                                                      {"Auudio", "Audio"},
                                                      {"Videp", "Video"},
                                                      {"Vidoe", "Video"},
                                                      {"videoslid", "VideoSlide"},
                                                      {"Transmision", "Transmission"},
                                                      {"Transxxxxxxx", ""},
                                                      {"Hardware", ""},
                                                      {"", ""},
                                                      {"Au", ""},
                                                      {std::string(1000, 'A'), ""}};
  for (const auto& [text, nearest] : rows) EXPECT_EQ(Nearest(text, kNames), nearest) << text;
}

TEST(Nearest, PrefersTheNearerAndThenTheFirst) {
  const std::vector<std::string> names = {"abcdefgh", "abcdefgx", "abcdefgi"};
  EXPECT_EQ(Nearest("abcdefgx", names), "abcdefgx");
  EXPECT_EQ(Nearest("abcdefgz", names), "abcdefgh");
}

TEST(Nearest, AsksWhetherItIsMeant) {
  EXPECT_EQ(DidYouMean("vidoe", kNames), " (did you mean \"Video\"?)");
  EXPECT_EQ(DidYouMean("Colours", kNames), "");
}

}  // namespace
