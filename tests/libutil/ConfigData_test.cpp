// SPDX-License-Identifier: Apache-2.0
#include "util/ConfigData.h"

#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <cmath>
#include <concepts>
#include <functional>
#include <limits>
#include <locale>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

TEST(ConfigData, IsInvalidOnlyWithoutAString) {
  EXPECT_FALSE(ConfigData().IsValid());
  EXPECT_FALSE(ConfigData(static_cast<const char*>(nullptr)).IsValid());
  EXPECT_TRUE(ConfigData("").IsValid());
  EXPECT_TRUE(ConfigData(std::string()).IsValid());
  EXPECT_TRUE(ConfigData(false).IsValid());
  EXPECT_TRUE(ConfigData(0).IsValid());
  EXPECT_TRUE(ConfigData(0U).IsValid());
  EXPECT_TRUE(ConfigData(0L).IsValid());
  EXPECT_TRUE(ConfigData(0UL).IsValid());
  EXPECT_TRUE(ConfigData(0LL).IsValid());
  EXPECT_TRUE(ConfigData(0ULL).IsValid());
  EXPECT_TRUE(ConfigData(0.0).IsValid());
}

TEST(ConfigData, IsInvalidOnceInvalidated) {
  ConfigData value("text");
  value.SetInvalid();
  EXPECT_FALSE(value.IsValid());
  EXPECT_STREQ(value.ToCstr(), "");
  EXPECT_EQ(value, ConfigData());
  value = ConfigData("again");
  EXPECT_TRUE(value.IsValid());
  EXPECT_EQ(value.ToString(), "again");
}

TEST(ConfigData, HoldsNumbersAndFlagsAsStrings) {
  EXPECT_EQ(ConfigData(true).ToString(), "1");
  EXPECT_EQ(ConfigData(false).ToString(), "0");
  EXPECT_EQ(ConfigData(-5).ToString(), "-5");
  EXPECT_EQ(ConfigData(std::numeric_limits<int>::min()).ToString(), "-2147483648");
  EXPECT_EQ(ConfigData(std::numeric_limits<unsigned int>::max()).ToString(), "4294967295");
  EXPECT_EQ(ConfigData(-2147483647L).ToString(), "-2147483647");
  EXPECT_EQ(ConfigData(4294967295UL).ToString(), "4294967295");
  EXPECT_EQ(ConfigData(std::numeric_limits<long long>::min()).ToString(), "-9223372036854775808");
  EXPECT_EQ(ConfigData(std::numeric_limits<unsigned long long>::max()).ToString(), "18446744073709551615");
  EXPECT_EQ(ConfigData(0.1).ToString(), "0.1");
  EXPECT_EQ(ConfigData(1.0).ToString(), "1");
  EXPECT_EQ(ConfigData(-0.0).ToString(), "-0");
  EXPECT_EQ(ConfigData("as it is").ToString(), "as it is");
  EXPECT_STREQ(ConfigData("as it is").ToCstr(), "as it is");
  EXPECT_EQ(ConfigData(std::string("a\0b", 3)).ToString().size(), 3u);
  EXPECT_STREQ(ConfigData().ToCstr(), "");
  EXPECT_EQ(ConfigData().ToString(), "");
}

TEST(ConfigData, ReadsEveryDoubleBack) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double number :
       {0.0, -0.0, 0.1, -1.5, 1e21, 1e-7, 100000.0, std::numeric_limits<double>::max(),
        std::numeric_limits<double>::min(), std::numeric_limits<double>::denorm_min(), infinity, -infinity}) {
    const double back = ConfigData(number).ToDouble(7.0);
    EXPECT_EQ(back, number);
    EXPECT_EQ(std::signbit(back), std::signbit(number));
  }
  EXPECT_TRUE(std::isnan(ConfigData(std::numeric_limits<double>::quiet_NaN()).ToDouble(7.0)));
  EXPECT_TRUE(std::isnan(ConfigData(-std::numeric_limits<double>::quiet_NaN()).ToDouble(7.0)));

  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const double number = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 2000) - 1000);
    ASSERT_EQ(ConfigData(number).ToDouble(), number);
  }
}

TEST(ConfigData, IgnoresTheLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new Comma));
  EXPECT_EQ(ConfigData(1234.5).ToString(), "1234.5");
  EXPECT_EQ(ConfigData(1234567).ToString(), "1234567");
  EXPECT_EQ(ConfigData("0.5").ToDouble(), 0.5);
  EXPECT_EQ(ConfigData("0,5").ToDouble(9.0), 9.0);
  std::locale::global(previous);
}

TEST(ConfigData, ComparesStrings) {
  EXPECT_EQ(ConfigData(), ConfigData());
  EXPECT_NE(ConfigData(), ConfigData(""));
  EXPECT_NE(ConfigData(""), ConfigData());
  EXPECT_EQ(ConfigData(true), ConfigData("1"));
  EXPECT_EQ(ConfigData(1), ConfigData(1.0));
  EXPECT_NE(ConfigData("1"), ConfigData("1.0"));
  EXPECT_NE(ConfigData("a"), ConfigData("A"));
  EXPECT_NE(ConfigData(std::string("a\0b", 3)), ConfigData(std::string("a\0c", 3)));
}

TEST(ConfigData, IsCopiedAndMoved) {
  const std::string longText(100, 'x');
  ConfigData source(longText);
  ConfigData copy(source);
  EXPECT_EQ(copy, source);
  ConfigData moved(std::move(source));
  EXPECT_EQ(moved, copy);
  EXPECT_FALSE(source.IsValid());  // NOLINT(bugprone-use-after-move)
  EXPECT_STREQ(source.ToCstr(), "");
  EXPECT_EQ(source, ConfigData());

  ConfigData assigned("old");
  assigned = std::move(moved);
  EXPECT_EQ(assigned, copy);
  EXPECT_FALSE(moved.IsValid());  // NOLINT(bugprone-use-after-move)
  ConfigData& self = assigned;
  assigned = std::move(self);
  EXPECT_EQ(assigned, copy);
  assigned = ConfigData();
  EXPECT_FALSE(assigned.IsValid());
  static_assert(std::is_nothrow_move_constructible_v<ConfigData>);
  static_assert(std::is_nothrow_move_assignable_v<ConfigData>);
}

TEST(ConfigData, IsNotMadeFromOtherPointers) {
  static_assert(!std::is_constructible_v<ConfigData, int*>);
  static_assert(!std::is_constructible_v<ConfigData, const void*>);
  static_assert(!std::is_constructible_v<ConfigData, const unsigned char*>);
  static_assert(std::is_constructible_v<ConfigData, char*>);
  EXPECT_TRUE(ConfigData(const_cast<char*>("text")).IsValid());
}

bool Returned(const ConfigData& value) {
  return value;
}

int Overloaded(bool) {
  return 1;
}
int Overloaded(const char*) {
  return 2;
}

// What must not compile is in the folder `refused`.
TEST(ConfigData, ConvertsToAFlagWhereverOneIsWanted) {
  const ConfigData on("30");
  ConfigData off("false");
  const bool copied = on;
  const bool braced{on};
  const bool& bound = off;
  bool assigned = false;
  assigned = on;
  EXPECT_TRUE(copied && braced && assigned);
  EXPECT_FALSE(bound);
  EXPECT_TRUE(on);
  EXPECT_FALSE(off) << "streams beside it";
  ASSERT_TRUE(ConfigData(true));
  EXPECT_TRUE(static_cast<bool>(on));
  EXPECT_TRUE(!off);
  EXPECT_TRUE(on && !off && (off || on));
  EXPECT_EQ(on ? 1 : 2, 1);
  EXPECT_TRUE(Returned(on));
  EXPECT_EQ(Overloaded(on), 1);
  if (off) FAIL();
  while (off) FAIL();

  const std::optional<bool> optional = on;
  EXPECT_TRUE(optional.value());
  const std::atomic<bool> atomic(off);
  EXPECT_FALSE(atomic);
  std::vector<bool> flags{off};
  flags.push_back(on);
  flags[0] = on;
  EXPECT_EQ(flags, (std::vector<bool>{true, true}));
  const std::function<bool()> function = [&] { return on; };
  EXPECT_TRUE(function());

  static_assert(std::is_convertible_v<ConfigData, bool> && std::is_constructible_v<bool, ConfigData>);
  static_assert(!std::is_convertible_v<ConfigData, int> && !std::is_constructible_v<int, ConfigData>);
  static_assert(!std::is_constructible_v<std::string, ConfigData>);
  static_assert(!std::is_assignable_v<std::string&, ConfigData>);
}

TEST(ConfigData, IsAnOrdinaryValueBesideItsConversion) {
  const ConfigData value("1");
  ConfigData other(value);
  other = value;
  other = "1";
  EXPECT_EQ(ConfigData("1"), value);
  EXPECT_EQ(value, other);
  EXPECT_NE(ConfigData("2"), value);
  EXPECT_EQ("1", value);
  EXPECT_EQ(value, std::string("1"));
  EXPECT_TRUE(value == "1" && "1" == value && value != "2");
  EXPECT_EQ((true ? value : ConfigData()), other);

  const std::any any = value;
  EXPECT_EQ(std::any_cast<ConfigData>(any), value);
  const std::optional<ConfigData> optional = value;
  EXPECT_EQ(*optional, value);
  const std::variant<std::string, ConfigData> variant = value;
  EXPECT_EQ(std::get<ConfigData>(variant), value);
  std::map<std::string, ConfigData> map{{"a", value}};
  map["b"] = value;
  EXPECT_EQ(map["a"], map["b"]);
  static_assert(std::copyable<ConfigData> && std::equality_comparable<ConfigData>);
}

TEST(ConfigData, MayHoldZeroBytes) {
  const std::string text("12\0x", 4);
  const ConfigData value(text);
  EXPECT_EQ(value.ToString(), text);
  EXPECT_STREQ(value.ToCstr(), "12");
  EXPECT_NE(value, ConfigData("12"));
  EXPECT_EQ(value, ConfigData(text));
  EXPECT_EQ(value.ToInt(-1), -1);
  EXPECT_EQ(ConfigData(std::string("0\0", 2)).ToBool(true), true);
  EXPECT_TRUE(ConfigData(std::string("0\0", 2)));
}

TEST(ConfigData, CountsAsOnOrOff) {
  EXPECT_FALSE(ConfigData());
  for (const char* off : {"", "0", "-0", "00", "0.0", "-0.000", ".0", "0.", "0e5", "0E-99", "0e999999",
                          "false", "FALSE", "False", "fAlSe"}) {
    EXPECT_FALSE(ConfigData(off)) << '"' << off << '"';
  }
  for (const char* on : {"1",      "-1",
                         "0.1",    "true",
                         "TRUE",   "yes",
                         "no",     "off",
                         "falsey", "fals",
                         " false", " ",
                         " 0",     "0 ",
                         "0x0",    "0a",
                         "+0",     "-",
                         "e",      "1e999",
                         "1e-400", "-1e-400",
                         "inf",    "nan",
                         "-nan",   "1e-99999999999999999999"}) {
    EXPECT_TRUE(ConfigData(on)) << '"' << on << '"';
  }
  EXPECT_TRUE(ConfigData(std::string("0\0", 2)));
  EXPECT_TRUE(ConfigData(true));
  EXPECT_FALSE(ConfigData(false));
  EXPECT_TRUE(ConfigData(-3));
  EXPECT_FALSE(ConfigData(0.0));
  EXPECT_TRUE(ConfigData(std::numeric_limits<double>::denorm_min()));
}

namespace {

constexpr bool yes = true;
constexpr bool no = false;
constexpr bool kIsLong64 = sizeof(long) == 8;

/// Which typed reads accept the string; the others return the default.
struct Row {
  const char* text;
  bool isInt, isUInt, isInt64, isDouble, isBool;
};

constexpr Row kRows[] = {
    // text                    int  uint  int64 double bool
    {"0", yes, yes, yes, yes, yes},
    {"-0", yes, no, yes, yes, yes},
    {"007", yes, yes, yes, yes, yes},
    {"2147483647", yes, yes, yes, yes, yes},
    {"2147483648", no, yes, yes, yes, yes},
    {"-2147483648", yes, no, yes, yes, yes},
    {"-2147483649", no, no, yes, yes, yes},
    {"4294967295", no, yes, yes, yes, yes},
    {"4294967296", no, no, yes, yes, yes},
    {"-1", yes, no, yes, yes, yes},
    {"9223372036854775807", no, no, yes, yes, yes},
    {"9223372036854775808", no, no, no, yes, yes},
    {"-9223372036854775808", no, no, yes, yes, yes},
    {"-9223372036854775809", no, no, no, yes, yes},
    {"18446744073709551616", no, no, no, yes, yes},
    {"1.5", no, no, no, yes, yes},
    {"1.0", no, no, no, yes, yes},
    {"1e3", no, no, no, yes, yes},
    {"1E3", no, no, no, yes, yes},
    {"1.7976931348623157e308", no, no, no, yes, yes},
    {"1.7976931348623159e308", no, no, no, no, yes},
    {"1e999", no, no, no, no, yes},
    {"-1e999", no, no, no, no, yes},
    {"1e-400", no, no, no, no, yes},
    {"0e999", no, no, no, yes, yes},
    {"5e-324", no, no, no, yes, yes},
    {"inf", no, no, no, yes, yes},
    {"-inf", no, no, no, yes, yes},
    {"true", no, no, no, no, yes},
    {"FALSE", no, no, no, no, yes},
    {"", no, no, no, no, no},
    {" 1", no, no, no, no, no},
    {"1 ", no, no, no, no, no},
    {"+1", no, no, no, no, no},
    {"1a", no, no, no, no, no},
    {"0x10", no, no, no, no, no},
    {"0X10", no, no, no, no, no},
    {"1e", no, no, no, no, no},
    {"-", no, no, no, no, no},
    {"--1", no, no, no, no, no},
    {"1,5", no, no, no, no, no},
    {"yes", no, no, no, no, no},
};

}  // namespace

TEST(ConfigData, ReadsWholeNumbersInRangeOnly) {
  for (const Row& row : kRows) {
    const ConfigData value(row.text);
    // A string that is accepted gives the same number with either default.
    EXPECT_EQ(value.ToInt(11) == value.ToInt(12), row.isInt) << row.text;
    EXPECT_EQ(value.ToUInt(11) == value.ToUInt(12), row.isUInt) << row.text;
    EXPECT_EQ(value.ToInt64(11) == value.ToInt64(12), kIsLong64 ? row.isInt64 : row.isInt) << row.text;
    EXPECT_EQ(value.ToDouble(11.25) == value.ToDouble(12.25), row.isDouble) << row.text;
    EXPECT_EQ(value.ToBool(true) == value.ToBool(false), row.isBool) << row.text;
    if (!row.isInt) {
      EXPECT_EQ(value.ToInt(11), 11) << row.text;
    }
    if (!row.isDouble) {
      EXPECT_EQ(value.ToDouble(11.25), 11.25) << row.text;
    }
  }
}

TEST(ConfigData, ReadsTheNumberThatItsStringGives) {
  EXPECT_EQ(ConfigData("2147483647").ToInt(), std::numeric_limits<int>::max());
  EXPECT_EQ(ConfigData("-2147483648").ToInt(), std::numeric_limits<int>::min());
  EXPECT_EQ(ConfigData("4294967295").ToUInt(), std::numeric_limits<unsigned int>::max());
  EXPECT_EQ(ConfigData(std::numeric_limits<long>::min()).ToInt64(), std::numeric_limits<long>::min());
  EXPECT_EQ(ConfigData("1e3").ToDouble(), 1000.0);
  EXPECT_EQ(ConfigData(std::numeric_limits<long>::max()).ToInt64(), std::numeric_limits<long>::max());
  EXPECT_EQ(ConfigData("007").ToInt(), 7);
}

TEST(ConfigData, ReadsFlagsFromWordsAndNumbers) {
  EXPECT_TRUE(ConfigData("True").ToBool(false));
  EXPECT_FALSE(ConfigData("fAlse").ToBool(true));
  EXPECT_TRUE(ConfigData("2").ToBool(false));
  EXPECT_FALSE(ConfigData("0.0").ToBool(true));
  EXPECT_TRUE(ConfigData("1e-400").ToBool(false));
}

TEST(ConfigData, ReadsDefaultsFromAnEmptyValue) {
  const ConfigData empty;
  EXPECT_EQ(empty.ToInt(), 0);
  EXPECT_EQ(empty.ToUInt(), 0u);
  EXPECT_EQ(empty.ToInt64(), 0);
  EXPECT_EQ(empty.ToDouble(), 0.0);
  EXPECT_EQ(empty.ToInt(3), 3);
  EXPECT_EQ(empty.ToUInt(3), 3u);
  EXPECT_EQ(empty.ToInt64(3), 3);
  EXPECT_EQ(empty.ToDouble(2.5), 2.5);
  EXPECT_TRUE(empty.ToBool(true));
  EXPECT_FALSE(empty.ToBool());
  EXPECT_EQ(ConfigData(std::string("5\0", 2)).ToInt(3), 3);
}
