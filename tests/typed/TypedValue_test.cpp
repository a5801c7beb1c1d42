// SPDX-License-Identifier: Apache-2.0
#include "tessel/TypedValue.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "TypedTest.h"
#include "support/AllocationCount.h"

namespace {

enum class Codec { kNone, kH264, kVp8 };
enum Plain { kLow = -1, kHigh = 7 };

}  // namespace

template <>
struct kalStore::ConfigEnum<Codec> {
  static constexpr ConfigEnumName<Codec> kNames[] = {{Codec::kH264, "h264"}, {Codec::kVp8, "vp8"}};
};
template <>
struct kalStore::ConfigEnum<Plain> {
  static constexpr ConfigEnumName<Plain> kNames[] = {{kLow, "low"}, {kHigh, "high, that needs much memory"}};
};

namespace {

using std::chrono::milliseconds;

// Every type of a key has a place here, and no other has.
template <class... Types>
constexpr bool kAreConfigTypes = (ConfigType<Types> && ...);
template <class... Types>
constexpr bool kAreNoConfigTypes = (!ConfigType<Types> && ...);
static_assert(
    kAreConfigTypes<bool, int, unsigned, long, unsigned long, long long, unsigned long long, float, double,
                    std::string, std::int64_t, std::uint64_t, std::size_t, milliseconds, std::chrono::hours,
                    std::chrono::duration<int, std::ratio<1, 30>>, Codec, Plain>);
static_assert(kAreNoConfigTypes<char, signed char, short, unsigned short, wchar_t, long double, const char*,
                                const int, int&, std::chrono::duration<double>,
                                std::chrono::steady_clock::time_point, KalConfigGroup, ConfigData, void>);

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
  using Long = std::numeric_limits<std::int64_t>;
  using ULong = std::numeric_limits<std::uint64_t>;
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
      {Text(Int::min() - std::int64_t{1}), no, no, yes, no, yes, yes},
      {Text(UInt::max()), no, yes, yes, yes, yes, yes},
      {Text(UInt::max() + std::int64_t{1}), no, no, yes, yes, yes, yes},
      {Text(Long::max()), no, no, yes, yes, yes, yes},
      {Text(Long::max() + std::uint64_t{1}), no, no, no, yes, yes, yes},
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
    EXPECT_EQ(ReadAs<std::int64_t>(value).has_value(), row.isLong) << row.text;
    EXPECT_EQ(ReadAs<std::uint64_t>(value).has_value(), row.isULong) << row.text;
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
  expectSame(std::numeric_limits<std::int64_t>::min());
  expectSame(std::numeric_limits<std::uint64_t>::max());
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

TEST(ReadAs, NeitherThrowsNorAllocatesForAnyTypeButAString) {
  static_assert(!noexcept(ReadAs<std::string>(ConfigData())));
  const ConfigData texts[] = {"1",
                              "1.5",
                              "",
                              "vp8",
                              "high, that needs much memory",
                              "1e999",
                              "a string that is longer than what fits into the object itself",
                              "0.1000000000000000055511151231257827021181583404541015625"};
  const auto expectQuiet = [&]<class T>(T) {
    const AllocationCount allocations;
    for (const ConfigData& text : texts) {
      static_assert(noexcept(ReadAs<T>(text)));
      static_cast<void>(ReadAs<T>(text));
    }
    EXPECT_EQ(allocations.Count(), 0U) << typeid(T).name();
  };
  expectQuiet(true);
  expectQuiet(0);
  expectQuiet(0U);
  expectQuiet(0L);
  expectQuiet(0ULL);
  expectQuiet(0.0F);
  expectQuiet(0.0);
  expectQuiet(milliseconds());
  expectQuiet(Codec::kVp8);
  expectQuiet(kLow);
}

TEST(ReadAs, TakesAFloatWithinItsOwnRange) {
  EXPECT_EQ(ReadAs<float>("3.5"), 3.5F);
  EXPECT_EQ(ReadAs<float>("-3.4028235e38"), std::numeric_limits<float>::lowest());
  // Just less than half of the last bit beyond the greatest float, and just that.
  EXPECT_EQ(ReadAs<float>("3.402823567797336e38"), std::numeric_limits<float>::max());
  EXPECT_EQ(ReadAs<float>("340282356779733661637539395458142568448"), std::nullopt);
  EXPECT_EQ(ReadAs<float>("1e-45"), std::numeric_limits<float>::denorm_min());
  for (const char* text : {"3.4028236e38", "3.5e38", "-1e39", "1e-50", "", "3.5f", " 3.5", "0x1p3", "fast"}) {
    EXPECT_EQ(ReadAs<float>(text), std::nullopt) << text;
  }
}

TEST(ReadAs, TakesADurationAsAWholeNumberOfItsUnit) {
  EXPECT_EQ(ReadAs<milliseconds>("1500"), milliseconds(1500));
  EXPECT_EQ(ReadAs<std::chrono::seconds>("-3"), std::chrono::seconds(-3));
  for (const char* text : {"1.5", "1500ms", "", "1 s", "9223372036854775808"}) {
    EXPECT_EQ(ReadAs<milliseconds>(text), std::nullopt) << text;
  }
  using Frames = std::chrono::duration<unsigned int, std::ratio<1, 30>>;
  EXPECT_EQ(ReadAs<Frames>("4294967295"), Frames(4294967295U));
  EXPECT_EQ(ReadAs<Frames>("4294967296"), std::nullopt);
  EXPECT_EQ(ReadAs<Frames>("-1"), std::nullopt);
}

TEST(ReadAs, TakesAnEnumByItsNameAlone) {
  EXPECT_EQ(ReadAs<Codec>("h264"), Codec::kH264);
  EXPECT_EQ(ReadAs<Codec>("vp8"), Codec::kVp8);
  EXPECT_EQ(ReadAs<Plain>("low"), kLow);
  for (const std::string& text :
       {std::string("VP8"), std::string("vp"), std::string("vp8 "), std::string("2"), std::string(),
        std::string("vp8\0", 4), std::string("kVp8")}) {
    EXPECT_EQ(ReadAs<Codec>(ConfigData(text)), std::nullopt) << text;
  }
}

TEST(ToConfigData, GivesWhatReadAsReadsBack) {
  const auto expectSame = []<class T>(T value, const char* text) {
    EXPECT_EQ(ToConfigData(value).ToString(), text);
    EXPECT_EQ(ReadAs<T>(ToConfigData(value)), value);
  };
  expectSame(true, "1");
  expectSame(-5, "-5");
  expectSame(5U, "5");
  expectSame(std::numeric_limits<long long>::min(), "-9223372036854775808");
  expectSame(std::numeric_limits<unsigned long long>::max(), "18446744073709551615");
  expectSame(std::int64_t{1} << 40, "1099511627776");
  expectSame(0.1F, "0.1");
  expectSame(std::numeric_limits<float>::max(), "3.4028235e+38");
  expectSame(std::numeric_limits<float>::denorm_min(), "1e-45");
  expectSame(-0.25, "-0.25");
  expectSame(std::string("text"), "text");
  expectSame(milliseconds(1500), "1500");
  expectSame(std::chrono::hours(-2), "-2");
  expectSame(Codec::kVp8, "vp8");
  expectSame(kHigh, "high, that needs much memory");
}

TEST(ToConfigData, GivesAnInvalidValueForAnEnumsValueWithoutAName) {
  EXPECT_FALSE(ToConfigData(Codec::kNone).IsValid());
  EXPECT_FALSE(ToConfigData(static_cast<Codec>(99)).IsValid());
}
