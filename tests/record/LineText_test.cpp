// SPDX-License-Identifier: Apache-2.0
#include "record/LineText.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include "tessel/json.h"

namespace kalStore::internal {
namespace {

std::string JsonString(std::string_view text) {
  LineBuffer out;
  AppendJsonString(out, text);
  return std::string(out.Text());
}

TEST(LineText, MayBeginWithAByte) {
  LineBuffer out;
  out += '{';
  EXPECT_EQ(out.Text(), "{");
}

TEST(LineText, WritesMembersInTheirOrder) {
  LineBuffer out;
  out += "before\n";
  constexpr std::array kNames{"old", "new"};
  LineText(out, "set", 1'204'117'000)
      .Number("call", std::numeric_limits<std::uint64_t>::max())
      .Word("group", "Video")
      .String("name", "a\"b")
      .Microseconds("run_us", 4'500)
      .True("transient")
      .Strings("cut", kNames)
      .Raw("origin", "{}")
      .End();
  EXPECT_EQ(out.Text(),
            "before\n{\"type\":\"set\",\"t\":1.204117,\"call\":18446744073709551615,\"group\":\"Video\","
            "\"name\":\"a\\\"b\","
            "\"run_us\":4.5,\"transient\":true,\"cut\":[\"old\",\"new\"],\"origin\":{}}\n");
}

TEST(LineText, WritesTimesExactAndAsShortAsPossible) {
  const struct {
    std::int64_t ns;
    const char* seconds;
    const char* microseconds;
  } rows[] = {{0, "0", "0"},
              {1, "0.000000001", "0.001"},
              {1'000, "0.000001", "1"},
              {1'000'000'000, "1", "1000000"},
              {1'000'000'001, "1.000000001", "1000000.001"},
              {-5, "0", "0"},
              {std::numeric_limits<std::int64_t>::max(), "9223372036.854775807", "9223372036854775.807"}};
  for (const auto& row : rows) {
    LineBuffer out;
    LineText(out, "x", row.ns).Microseconds("us", row.ns).End();
    EXPECT_EQ(out.Text(),
              std::string("{\"type\":\"x\",\"t\":") + row.seconds + ",\"us\":" + row.microseconds + "}\n");
  }
}

TEST(LineText, LeavesCharactersOfUtf8AsTheyAre) {
  for (const char* const text :
       {"",           "a",          "\x7F",       "\u0080",     "\u00E9",     "\u07FF",     "\u0800",
        "\u0FFF",     "\u1000",     "\uD7FF",     "\uE000",     "\uFFFD",     "\uFFFF",     "\U00010000",
        "\U0001F3A5", "\U0003FFFF", "\U00040000", "\U000FFFFF", "\U00100000", "\U0010FFFF", "a \u00E9b"}) {
    EXPECT_EQ(JsonString(text), '"' + std::string(text) + '"');
  }
}

TEST(LineText, WritesAByteThatIsNoUtf8AsAnEscape) {
  const struct {
    std::string text;
    const char* json;
  } rows[] = {{"\x80", "\\u0080"},  // A character's end alone.
              {"\xC3", "\\u00c3"},  // Its beginning alone.
              {"\xC3x", "\\u00c3x"},
              {"\xC1\xBF", "\\u00c1\\u00bf"},  // Longer than needed.
              {"\xE0\x9F\xBF", "\\u00e0\\u009f\\u00bf"},
              {"\xF0\x8F\xBF\xBF", "\\u00f0\\u008f\\u00bf\\u00bf"},
              {"\xED\xA0\x80", "\\u00ed\\u00a0\\u0080"},             // A surrogate.
              {"\xF4\x90\x80\x80", "\\u00f4\\u0090\\u0080\\u0080"},  // Beyond the last character.
              {"\xF5\x80\x80\x80", "\\u00f5\\u0080\\u0080\\u0080"},
              {"\xE2\x82", "\\u00e2\\u0082"},
              {"\xF0\x9F\x8E", "\\u00f0\\u009f\\u008e"},
              {"\n\r\t\b\f\"\\/", "\\n\\r\\t\\b\\f\\\"\\\\/"},
              {std::string("\0\x1F", 2), "\\u0000\\u001f"}};
  for (const auto& row : rows) EXPECT_EQ(JsonString(row.text), std::string("\"") + row.json + '"');
}

TEST(LineText, TakesNothingBehindTheStringForTheEndOfACharacter) {
  for (const std::string_view text : {"a", "\u00E9", "\u0800", "\U0001F3A5"}) {
    EXPECT_EQ(CharacterSize(text), text.size());
    for (std::size_t size = 0; size < text.size(); ++size) {
      EXPECT_EQ(CharacterSize(text.substr(0, size)), 0U) << text << ' ' << size;
    }
  }
}

TEST(LineText, EndsWhereTheStringEnds) {
  constexpr std::string_view kText = "a string and what is behind it";
  for (std::size_t size = 0; size <= kText.size(); ++size) {
    EXPECT_EQ(JsonString(kText.substr(0, size)), '"' + std::string(kText.substr(0, size)) + '"');
  }
}

TEST(LineText, EscapesAByteWhereverItIs) {
  for (int code = 0; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    const std::string alone = JsonString(byte);
    for (std::size_t at = 0; at < 17; ++at) {
      const std::string begin(at, '!'), end(16 - at, '#');
      EXPECT_EQ(JsonString(begin + byte + end), '"' + begin + alone.substr(1, alone.size() - 2) + end + '"');
    }
  }
}

TEST(LineText, WritesStringsThatReadBackToTheSameBytes) {
  std::string all;
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      all += static_cast<char>(first);
      all += static_cast<char>(second);
    }
  }
  EXPECT_EQ(json::Deserialize(JsonString(all)).ToString(), all);
}

}  // namespace
}  // namespace kalStore::internal
