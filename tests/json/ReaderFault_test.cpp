// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tessel/json.h"

namespace {

json::ParseError FaultOf(const std::string& text) {
  json::ParseError error;
  json::Deserialize(text, error);
  return error;
}

TEST(ReaderFault, IsNoneForAWellFormedText) {
  json::ParseError error{1, 2, 3, "left from before"};
  EXPECT_EQ(json::Deserialize("[1]", error).size(), 1u);
  EXPECT_EQ(error.reason, nullptr);
  EXPECT_EQ(error.offset, 0u);
}

TEST(ReaderFault, IsAtTheFirstByteThatDoesNotFit) {
  struct {
    const char* text;
    std::size_t offset;
    const char* reason;
  } const cases[] = {
      {"[1,]", 3, "expected a value"},
      {"[1 2]", 3, "expected ',' or ']'"},
      {"{\"a\":1 2}", 7, "expected ',' or '}'"},
      {"{\"a\":1,}", 7, "expected a key in double quotes"},
      {"{1:2}", 1, "expected a key in double quotes"},
      {"{\"a\" 1}", 5, "expected ':'"},
      {"[] x", 3, "nothing but white space may follow the document"},
      {"[nulx]", 4, "expected true, false or null"},
      {"[-x]", 2, "expected a digit"},
      {"[1.x]", 3, "expected a digit"},
      {"[1e+x]", 4, "expected a digit"},
      {"[01]", 2, "expected ',' or ']'"},
      {"[\"a\\x\"]", 4, "unknown escape in a string"},
      {"{\"a\\1}", 4, "unknown escape in a string"},
      {"{\"a", 3, "the string is not closed"},
      {"[\"\\u00g0\"]", 6, "expected four hexadecimal digits after \\u"},
      // the first of two faults, though the string is not closed either
      {"[\"a\\x", 4, "unknown escape in a string"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(FaultOf(test.text).offset, test.offset) << test.text;
    EXPECT_STREQ(FaultOf(test.text).reason, test.reason) << test.text;
  }
}

// Digits and the contents of strings are looked at in groups of bytes: each byte, in each place of a group,
// with more groups after it.
TEST(ReaderFault, IsAtAnyByteAfterDigitsThatCannotFollowThem) {
  const std::string_view continues = "0123456789.eE,] \t\n\v\f\r";
  for (std::size_t digits = 1; digits <= 20; ++digits) {
    for (int byte = 0; byte < 256; ++byte) {
      if (continues.find(static_cast<char>(byte)) != std::string_view::npos) continue;
      const std::string text = '[' + std::string(digits, '9') + static_cast<char>(byte) + "123456789]";
      ASSERT_EQ(FaultOf(text).offset, digits + 1) << digits << " digits, then byte " << byte;
    }
  }
}

TEST(ReaderFault, IsAtAnyByteAfterAStringThatCannotFollowIt) {
  for (std::size_t length = 0; length <= 20; ++length) {
    for (int byte = 0; byte < 256; ++byte) {
      if (std::string_view(",] \t\n\v\f\r").find(static_cast<char>(byte)) != std::string_view::npos) continue;
      const std::string text =
          "[\"" + std::string(length, 'a') + '"' + static_cast<char>(byte) + "123456789]";
      ASSERT_EQ(FaultOf(text).offset, length + 3) << length << " letters and a quote, then byte " << byte;
    }
  }
}

TEST(ReaderFault, OfATextThatEndsEarlyIsAtItsEnd) {
  for (const std::string text : {"", "  ", "[", "[1", "[1,", "{", "{\"a", "{\"a\"", "{\"a\":", "{\"a\":1",
                                 "\"a", "\"a\\", "\"\\u", "\"\\u00", "tr", "-", "1.", "1e", "1e-"}) {
    EXPECT_EQ(FaultOf(text).offset, text.size()) << text;
    EXPECT_NE(FaultOf(text).reason, nullptr) << text;
  }
}

TEST(ReaderFault, LinesAndColumnsCountFromOneAndInBytes) {
  EXPECT_EQ(FaultOf("x").line, 1u);
  EXPECT_EQ(FaultOf("x").column, 1u);
  EXPECT_EQ(FaultOf("").column, 1u);

  const json::ParseError error = FaultOf("{\n  \"\xc3\xa9\": 1,\n  \"b\" 2\n}");
  EXPECT_EQ(error.line, 3u);
  EXPECT_EQ(error.column, 7u);
  EXPECT_EQ(FaultOf("[\"\xc3\xa9\" 1]").column, 7u);
  EXPECT_EQ(FaultOf("[\n").line, 2u);
  EXPECT_EQ(FaultOf("[\n").column, 1u);
}

TEST(ReaderFault, OfNestingIsAtTheLevelThatIsTooDeep) {
  for (const std::string level : {"[", "{\"a\":"}) {
    std::string text;
    for (int i = 0; i < 2000; ++i) text += level;
    const json::ParseError error = FaultOf(text);
    EXPECT_EQ(error.offset, 1000 * level.size());
    EXPECT_STREQ(error.reason, "nested deeper than 1000 levels");
  }
}

}  // namespace
