// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "tessel/json.h"

namespace {

using json::SerializeValue;
using json::Value;

template <class Number>
std::string Printed(const char* format, Number number) {
  char text[500];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

TEST(Writer, WritesOnlyObjectsAndArraysAsDocuments) {
  for (const Value& scalar :
       {Value(), Value("text"), Value(1), Value(1L), Value(1.5F), Value(1.5), Value(true), Value(1U)}) {
    EXPECT_EQ(json::Serialize(scalar), "") << scalar.GetType();
  }
  EXPECT_EQ(json::Serialize(json::Object()), "{}");
  EXPECT_EQ(json::Serialize(json::Array()), "[]");
}

TEST(Writer, WritesMembersInKeyOrderWithoutWhiteSpace) {
  Value object = json::Object();
  object["b"] = 2;
  object["c"] = json::Array();
  object["a"] = "one";
  EXPECT_EQ(json::Serialize(object), R"({"a":"one","b":2,"c":[]})");
}

TEST(Writer, WritesElementsInOrderAndNested) {
  json::Array inner;
  inner.push_back(nullptr);
  inner.push_back(json::Object());
  json::Array outer;
  outer.push_back(inner);
  outer.push_back(2);
  EXPECT_EQ(json::SerializeArray(inner), "[null,{}]");
  EXPECT_EQ(json::SerializeArray(outer), "[[null,{}],2]");
  EXPECT_EQ(json::Serialize(outer), "[[null,{}],2]");
}

TEST(Writer, WritesScalars) {
  EXPECT_EQ(SerializeValue(Value()), "null");
  EXPECT_EQ(SerializeValue(true), "true");
  EXPECT_EQ(SerializeValue(false), "false");
  EXPECT_EQ(SerializeValue("text"), R"("text")");
  EXPECT_EQ(SerializeValue(1.5F), "1.500000");
}

TEST(Writer, WritesNumbersAsPrintfDoes) {
  for (const int n : {0, -1, 7, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(SerializeValue(n), Printed("%d", n));
  }
  for (const long long n :
       {0LL, -5000000000LL, std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
    EXPECT_EQ(SerializeValue(n), Printed("%lld", n));
  }
  for (const unsigned int n : {0U, 4294967295U}) EXPECT_EQ(SerializeValue(n), Printed("%u", n));
  for (const float n : {0.1F, -0.0F, 16777216.0F, std::numeric_limits<float>::max(), 1e-30F}) {
    EXPECT_EQ(SerializeValue(n), Printed("%f", static_cast<double>(n)));
  }
  for (const double n : {0.1, -0.0, 1e-7, 5e-7, 2.5, 0.0000005, 1e15, 1e22, -1e300, 123456789.987654321,
                         std::numeric_limits<double>::max(), -std::numeric_limits<double>::denorm_min()}) {
    EXPECT_EQ(SerializeValue(n), Printed("%f", n));
  }
}

TEST(Writer, RoundsToSixDecimalsAsThePrinterDoes) {
  // Ties, which go to the even neighbour; the limits of what is rounded in integers; and numbers of any size.
  for (int i = -5000; i < 5000; ++i) {
    for (const double n :
         {i / 128.0, 1e6 + i / 256.0, 0.5e-6 * i, 9e12 + i / 512.0, std::ldexp(1 + i / 8192.0, -21)}) {
      EXPECT_EQ(SerializeValue(n), Printed("%f", n));
    }
  }
  std::mt19937_64 random(20);
  for (int i = 0; i < 100'000; ++i) {
    const double significand = 1 + static_cast<double>(random() >> 11) * 0x1p-53;
    const double n =
        std::ldexp(i % 2 == 0 ? significand : -significand, static_cast<int>(random() % 140) - 90);
    EXPECT_EQ(SerializeValue(n), Printed("%f", n));
  }
}

TEST(Writer, WritesAnInfinitySoThatItReadsBack) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SerializeValue(infinity), "1e999");
  EXPECT_EQ(SerializeValue(-std::numeric_limits<float>::infinity()), "-1e999");
  EXPECT_EQ(json::Deserialize(SerializeValue(infinity)).ToDouble(), infinity);
  EXPECT_EQ(json::Deserialize(SerializeValue(-infinity)).ToDouble(), -infinity);
}

TEST(Writer, WritesNotANumberAsNull) {
  EXPECT_EQ(SerializeValue(std::numeric_limits<double>::quiet_NaN()), "null");
  EXPECT_EQ(SerializeValue(std::numeric_limits<float>::quiet_NaN()), "null");
}

TEST(Writer, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(SerializeValue(R"(a"b\c)"), R"("a\"b\\c")");
  EXPECT_EQ(SerializeValue("\b\f\n\r\t"), R"("\b\f\n\r\t")");
  EXPECT_EQ(SerializeValue(std::string("\0\x01\x1f\x0b", 4)), R"("\u0000\u0001\u001f\u000b")");
}

TEST(Writer, LeavesEveryOtherByteAsItIs) {
  for (int byte = 0x20; byte <= 0xff; ++byte) {
    if (byte == '"' || byte == '\\') continue;
    const std::string text(1, static_cast<char>(byte));
    EXPECT_EQ(SerializeValue(text), '"' + text + '"');
  }
}

TEST(Writer, EscapesAtEveryPosition) {
  for (std::size_t at = 0; at < 20; ++at) {
    std::string text(20, 'x');
    text[at] = '\n';
    EXPECT_EQ(SerializeValue(text), '"' + std::string(at, 'x') + "\\n" + std::string(19 - at, 'x') + '"');
  }
}

TEST(Writer, EscapesKeys) {
  Value object = json::Object();
  object["a\"\n"] = 1;
  EXPECT_EQ(json::Serialize(object), R"({"a\"\n":1})");
}

// A text is put together in pieces, whose borders fall anywhere: here before, in and behind each element.
TEST(Writer, WritesWholeWhatIsLong) {
  const Value greatest = std::numeric_limits<double>::max();
  const std::string digits = SerializeValue(greatest);
  for (std::size_t size = 3750; size <= 4110; ++size) {
    for (const std::size_t before : {size, 2 * size}) {
      json::Array array;
      array.push_back(std::string(before, 'a'));
      array.push_back("\x01\"");
      array.push_back(std::numeric_limits<std::int64_t>::min());
      array.push_back(greatest);
      array.push_back(-0.25);
      array.push_back(std::string(before, 'b'));
      ASSERT_EQ('[' + ('"' + std::string(before, 'a') + '"') + R"(,"\u0001\"",-9223372036854775808,)" +
                    digits + ",-0.250000," + ('"' + std::string(before, 'b') + '"') + ']',
                json::SerializeArray(array))
          << before;
    }
  }
}

}  // namespace
