// SPDX-License-Identifier: Apache-2.0
#include "declare/NumberPattern.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <regex>
#include <string>

#include "tessel/TypedValue.h"

using declare::BoolPattern;
using declare::NumberPattern;
using declare::WholeNumberPattern;

TEST(NumberPattern, MatchesEveryNumberOfASmallRangeAndNoOther) {
  for (int least = -31; least <= 31; least += 2) {
    for (int most = least; most <= 131; most += 3) {
      const std::regex pattern(WholeNumberPattern(least, most, true));
      for (int number = -140; number <= 140; ++number) {
        ASSERT_EQ(std::regex_search(std::to_string(number), pattern), number >= least && number <= most)
            << number << " in " << least << " to " << most << ": " << WholeNumberPattern(least, most, true);
      }
    }
  }
}

TEST(NumberPattern, IsExactAtTheEndsOfLongRanges) {
  constexpr std::int64_t kEnds[] = {std::numeric_limits<std::int64_t>::min() + 1,
                                    std::numeric_limits<std::int64_t>::min() + 12345,
                                    std::numeric_limits<std::int32_t>::min(),
                                    -100000,
                                    -99999,
                                    -1,
                                    0,
                                    1,
                                    9,
                                    10,
                                    99,
                                    100,
                                    101,
                                    65535,
                                    999999,
                                    1000000,
                                    std::numeric_limits<std::int32_t>::max(),
                                    std::numeric_limits<std::int64_t>::max() - 1};
  for (const std::int64_t least : kEnds) {
    for (const std::int64_t most : kEnds) {
      if (most < least) continue;
      const std::regex pattern(WholeNumberPattern(least, most, true));
      for (const std::int64_t end : kEnds) {
        for (const std::int64_t number : {end - 1, end, end + 1}) {
          ASSERT_EQ(std::regex_search(std::to_string(number), pattern), number >= least && number <= most)
              << number << " in " << least << " to " << most;
        }
      }
    }
  }
}

TEST(NumberPattern, MatchesTheNumbersThatATypedReadTakes) {
  const std::regex whole(
      WholeNumberPattern(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), true));
  const std::regex natural(WholeNumberPattern(0, std::numeric_limits<unsigned int>::max(), false));
  const std::regex notNegative(WholeNumberPattern(0, std::numeric_limits<int>::max(), true));
  const std::regex number(NumberPattern());
  const std::regex flag(BoolPattern());
  for (const char* text :
       {"",           "0",     "-0",         "00",         "007",         "-007",        "+1",
        " 1",         "1 ",    "1\n",        "1.",         ".5",          "-.5",         ".",
        "-",          "1e5",   "1e",         "1e+5",       "1E-5",        "1.5e05",      "0x1",
        "1,5",        "true",  "TRUE",       "tru",        "False",       "yes",         "on",
        "--1",        "1-1",   "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295",
        "4294967296", "1e400", "one"}) {
    const ConfigData value(text);
    EXPECT_EQ(std::regex_search(text, whole), kalStore::ReadAs<int>(value).has_value()) << '"' << text << '"';
    EXPECT_EQ(std::regex_search(text, natural), kalStore::ReadAs<unsigned int>(value).has_value())
        << '"' << text << '"';
    const std::optional<int> read = kalStore::ReadAs<int>(value);
    EXPECT_EQ(std::regex_search(text, notNegative), read && *read >= 0) << '"' << text << '"';
    EXPECT_EQ(std::regex_search(text, flag), kalStore::ReadAs<bool>(value).has_value()) << '"' << text << '"';
    if (std::string(text) == "1e400") continue;  // Out of a double's range, which no pattern shows.
    EXPECT_EQ(std::regex_search(text, number), kalStore::ReadAs<double>(value).has_value())
        << '"' << text << '"';
  }
}
