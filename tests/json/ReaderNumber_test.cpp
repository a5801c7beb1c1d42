// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "tessel/json.h"

namespace {

using json::Deserialize;
using json::Value;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ReaderNumber, IsTypedByItsTextAndValue) {
  struct {
    const char* text;
    json::ValueType type;
    const char* written;
  } const cases[] = {
      {"0", json::IntVal, "0"},
      {"-0", json::IntVal, "0"},
      {"-1", json::IntVal, "-1"},
      {"2147483647", json::IntVal, "2147483647"},
      {"-2147483648", json::IntVal, "-2147483648"},
      {"2147483648", json::UnsignedIntVal, "2147483648"},
      {"3000000000", json::UnsignedIntVal, "3000000000"},
      {"4294967295", json::UnsignedIntVal, "4294967295"},
      {"4294967296", json::Int64Val, "4294967296"},
      {"-2147483649", json::Int64Val, "-2147483649"},
      {"5000000000", json::Int64Val, "5000000000"},
      // as far as a double is exact, and rounded to one beyond
      {"9007199254740993", json::Int64Val, "9007199254740992"},
      {"-9007199254740993", json::Int64Val, "-9007199254740992"},
      {"999999999999999999", json::Int64Val, "1000000000000000000"},
      {"1234567890123456789", json::Int64Val, "1234567890123456768"},
      {"9223372036854774784", json::Int64Val, "9223372036854774784"},
      {"-9223372036854775808", json::Int64Val, "-9223372036854775808"},
      {"-9223372036854775809", json::Int64Val, "-9223372036854775808"},
      // 2^63 - 1 is nearest to 2^63, which no 64-bit integer holds
      {"9223372036854775807", json::DoubleVal, "9223372036854775808.000000"},
      {"9223372036854775808", json::DoubleVal, "9223372036854775808.000000"},
      {"-9223372036854777856", json::DoubleVal, "-9223372036854777856.000000"},
      {"100000000000000000000", json::DoubleVal, "100000000000000000000.000000"},
      // a point or an exponent makes a double
      {"1.0", json::DoubleVal, "1.000000"},
      {"-0.0", json::DoubleVal, "-0.000000"},
      {"1e3", json::DoubleVal, "1000.000000"},
      {"1E3", json::DoubleVal, "1000.000000"},
      {"1e+3", json::DoubleVal, "1000.000000"},
      {"25e-1", json::DoubleVal, "2.500000"},
      {"0e0", json::DoubleVal, "0.000000"},
      {"0.5E1", json::DoubleVal, "5.000000"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(Deserialize(test.text).GetType(), test.type) << test.text;
    EXPECT_EQ(json::SerializeValue(Deserialize(test.text)), test.written) << test.text;
  }
}

TEST(ReaderNumber, FollowsTheGrammar) {
  for (const char* text :
       {"+1",  "01", "-01",  "00",    ".5",  "-.5", "5.",   "1.e3", "1e", "1e+",   "1e3.5", "-",
        "--1", "1-", "0x10", "1_000", "1,5", "inf", "-inf", "nan",  "1f", "1e5e5", "1.2.3", "- 1"}) {
    json::ParseError error;
    EXPECT_EQ(Deserialize(text, error).GetType(), json::NullVal) << text;
    EXPECT_NE(error.reason, nullptr) << text;
  }
}

TEST(ReaderNumber, FillsEveryRepresentation) {
  const Value integer = Deserialize("7");
  EXPECT_EQ(integer.ToInt(), 7);
  EXPECT_EQ(integer.ToUnsignedInt(), 7U);
  EXPECT_EQ(integer.ToInt64(), 7);
  EXPECT_EQ(integer.ToFloat(), 7.0F);
  EXPECT_EQ(integer.ToDouble(), 7.0);
  EXPECT_FALSE(integer.ToBool());

  const Value real = Deserialize("-2.75");
  EXPECT_EQ(real.ToInt(), -2);
  EXPECT_EQ(real.ToUnsignedInt(), 0U);
  EXPECT_EQ(real.ToInt64(), -2);
  EXPECT_EQ(real.ToFloat(), -2.75F);
  EXPECT_EQ(real.ToDouble(), -2.75);
}

TEST(ReaderNumber, RepresentationsThatCannotHoldItSaturate) {
  const Value large = Deserialize("1e300");
  EXPECT_EQ(large.ToInt(), std::numeric_limits<int>::max());
  EXPECT_EQ(large.ToUnsignedInt(), std::numeric_limits<unsigned int>::max());
  EXPECT_EQ(large.ToInt64(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(large.ToFloat(), std::numeric_limits<float>::max());

  const Value small = Deserialize("-1e300");
  EXPECT_EQ(small.ToInt(), std::numeric_limits<int>::min());
  EXPECT_EQ(small.ToUnsignedInt(), 0U);
  EXPECT_EQ(small.ToInt64(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(small.ToFloat(), std::numeric_limits<float>::lowest());

  EXPECT_EQ(Deserialize("3000000000").ToInt(), std::numeric_limits<int>::max());
  EXPECT_EQ(Deserialize("-5").ToUnsignedInt(), 0U);
  EXPECT_EQ(Deserialize("9223372036854775808").ToInt64(), std::numeric_limits<std::int64_t>::max());
}

TEST(ReaderNumber, TooLargeIsAnInfinityAndTooSmallIsZero) {
  EXPECT_EQ(Deserialize("1e999").ToDouble(), kInfinity);
  EXPECT_EQ(Deserialize("-1e99999999999999999999").ToDouble(), -kInfinity);
  EXPECT_EQ(Deserialize(std::string(400, '9')).ToDouble(), kInfinity);
  EXPECT_EQ(Deserialize(std::string(400, '9')).GetType(), json::DoubleVal);
  EXPECT_EQ(Deserialize("1e999").ToFloat(), std::numeric_limits<float>::infinity());
  EXPECT_EQ(Deserialize("1e999").ToInt(), std::numeric_limits<int>::max());
  EXPECT_EQ(Deserialize("1e-999").ToDouble(), 0.0);
  EXPECT_TRUE(std::signbit(Deserialize("-1e-99999999999999999999").ToDouble()));
  // exponents that just fit 64 bits
  EXPECT_EQ(Deserialize("12e9223372036854775807").ToDouble(), kInfinity);
  EXPECT_EQ(Deserialize("0.01e-9223372036854775808").ToDouble(), 0.0);
}

void ExpectAsStrtod(const std::string& text) {
  const double expected = std::strtod(text.c_str(), nullptr);
  const double actual = Deserialize(text).ToDouble();
  EXPECT_EQ(std::bit_cast<std::uint64_t>(actual), std::bit_cast<std::uint64_t>(expected)) << text;
}

TEST(ReaderNumber, IsTheOneThatTheCLibraryReads) {
  const std::string zeros(400, '0');
  for (const std::string text :
       {"4.9e-324", "2.4703282292062327e-324", "2.4703282292062328e-324", "1e-323", "2.2250738585072011e-308",
        "2.2250738585072014e-308", "1.7976931348623157e308", "1.7976931348623158e308",
        "1.7976931348623159e308", "0e99999999999999999999", "-0", "-0.0", "999999999999999999",
        "-999999999999999999", "0.1", "1e23"}) {
    ExpectAsStrtod(text);
  }
  for (const std::string& text : {"0." + zeros + "1e500", "0." + zeros + "1e800", "0." + zeros + "1e+10",
                                  "1" + zeros + "e+10", "1" + zeros + "e-500", "1" + zeros + "e-800",
                                  "0." + zeros + "1", "1" + zeros, "-1" + zeros + "e-100"}) {
    ExpectAsStrtod(text);
  }
}

TEST(ReaderNumber, OfRandomDigitsIsTheOneThatTheCLibraryReads) {
  std::mt19937 random(20260901);
  const auto upTo = [&random](unsigned int limit) { return static_cast<int>(random() % (limit + 1)); };
  const auto digits = [&](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += static_cast<char>('0' + upTo(9));
    return text;
  };
  for (int i = 0; i < 100000; ++i) {
    std::string text = upTo(1) ? "-" : "";
    text += static_cast<char>('1' + upTo(8));
    text += digits(upTo(i % 100 ? 20 : 900));
    if (upTo(1)) text += "." + digits(1 + upTo(20));
    if (upTo(2)) text += "e" + std::to_string(upTo(700) - 350);
    ExpectAsStrtod(text);
  }
}

}  // namespace
