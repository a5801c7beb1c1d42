// SPDX-License-Identifier: Apache-2.0
#include "tessel/TypedValue.h"

#include <limits>
#include <string>
#include <type_traits>

#include "TypedTest.h"

namespace {

template <class T>
std::string Text(T limit) {
  return ConfigData(limit).ToString();
}

struct Row {
  std::string text;
  bool isInt, isUInt, isLong, isULong, isDouble, isBool;
};

}  // namespace

TEST(ReadAs, TakesAWholeValueWithinRangeAlone) {
  using Int = std::numeric_limits<int>;
  using UInt = std::numeric_limits<unsigned int>;
  using Long = std::numeric_limits<long>;
  using ULong = std::numeric_limits<unsigned long>;
  constexpr bool yes = true;
  constexpr bool no = false;
  const Row rows[] = {
      // text                 int  uint long ulong double bool
      {"0", yes, yes, yes, yes, yes, yes},
      {"1", yes, yes, yes, yes, yes, yes},
      {"-0", yes, no, yes, no, yes, yes},
      {"-1", yes, no, yes, no, yes, yes},
      {"007", yes, yes, yes, yes, yes, yes},
      {Text(Int::max()), yes, yes, yes, yes, yes, yes},
      {Text(Int::max() + 1U), no, yes, yes, yes, yes, yes},
      {Text(Int::min()), yes, no, yes, no, yes, yes},
      {Text(Int::min() - 1L), no, no, yes, no, yes, yes},
      {Text(UInt::max()), no, yes, yes, yes, yes, yes},
      {Text(UInt::max() + 1L), no, no, yes, yes, yes, yes},
      {Text(Long::max()), no, no, yes, yes, yes, yes},
      {Text(Long::max() + 1UL), no, no, no, yes, yes, yes},
      {Text(Long::min()), no, no, yes, no, yes, yes},
      {Text(ULong::max()), no, no, no, yes, yes, yes},
      {"18446744073709551616", no, no, no, no, yes, yes},
      {"1.5", no, no, no, no, yes, yes},
      {"1.0", no, no, no, no, yes, yes},
      {"1e3", no, no, no, no, yes, yes},
      {"1e999", no, no, no, no, no, yes},
      {"1,5", no, no, no, no, no, no},
      {"+1", no, no, no, no, no, no},
      {" 1", no, no, no, no, no, no},
      {"1 ", no, no, no, no, no, no},
      {"0x10", no, no, no, no, no, no},
      {std::string("1\0", 2), no, no, no, no, no, no},
      {"", no, no, no, no, no, no},
      {"-", no, no, no, no, no, no},
      {"true", no, no, no, no, no, yes},
      {"False", no, no, no, no, no, yes},
      {"yes", no, no, no, no, no, no},
  };
  for (const Row& row : rows) {
    const ConfigData value(row.text);
    EXPECT_EQ(ReadAs<int>(value).has_value(), row.isInt) << row.text;
    EXPECT_EQ(ReadAs<unsigned int>(value).has_value(), row.isUInt) << row.text;
    EXPECT_EQ(ReadAs<long>(value).has_value(), row.isLong) << row.text;
    EXPECT_EQ(ReadAs<unsigned long>(value).has_value(), row.isULong) << row.text;
    EXPECT_EQ(ReadAs<double>(value).has_value(), row.isDouble) << row.text;
    EXPECT_EQ(ReadAs<bool>(value).has_value(), row.isBool) << row.text;
    EXPECT_EQ(ReadAs<std::string>(value), row.text);
  }
}

TEST(ReadAs, GivesBackWhatAValueWasMadeFrom) {
  const auto expectSame = []<class T>(T value) { EXPECT_EQ(ReadAs<T>(ConfigData(value)), value); };
  expectSame(true);
  expectSame(false);
  expectSame(-30);
  expectSame(30U);
  expectSame(std::numeric_limits<long>::min());
  expectSame(std::numeric_limits<unsigned long>::max());
  expectSame(0.1);
  expectSame(std::numeric_limits<double>::denorm_min());
  expectSame(std::string("a\0b", 3));
  expectSame(std::string());
}

TEST(ReadAs, FindsNothingInAnEmptyValue) {
  EXPECT_EQ(ReadAs<std::string>(ConfigData()), std::nullopt);
  EXPECT_EQ(ReadAs<bool>(ConfigData()), std::nullopt);
  EXPECT_EQ(ReadAs<int>(ConfigData()), std::nullopt);
}
