// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "tessel/json.h"

namespace {

using json::Value;

// "Equal" must say the same through == and !=, whichever form the compiler chooses.
void expectEqual(const Value& left, const Value& right) {
  EXPECT_TRUE(left == right) << json::SerializeValue(left) << " == " << json::SerializeValue(right);
  EXPECT_FALSE(left != right) << json::SerializeValue(left) << " != " << json::SerializeValue(right);
}

void expectUnequal(const Value& left, const Value& right) {
  EXPECT_FALSE(left == right) << json::SerializeValue(left) << " == " << json::SerializeValue(right);
  EXPECT_TRUE(left != right) << json::SerializeValue(left) << " != " << json::SerializeValue(right);
}

const std::vector<Value> kSevens = {7, 7L, 7.0F, 7.0, 7U};
const std::vector<Value> kZeros = {0, 0L, 0.0F, 0.0, 0U};
const std::vector<Value> kEmpties = {Value(), "", json::Object(), json::Array(), false};

TEST(ValueEquality, NumbersOfAllKindsCompareByValue) {
  for (const Value& left : kSevens) {
    for (const Value& right : kSevens) expectEqual(left, right);
    for (const Value& right : kZeros) expectUnequal(left, right);
  }
}

TEST(ValueEquality, IntegersCompareExactly) {
  constexpr long big = std::numeric_limits<long>::max();
  expectUnequal(big, big - 1);
  expectEqual(big, big);
  expectUnequal(-1, std::numeric_limits<unsigned int>::max());
  expectEqual(4294967295L, 4294967295U);
}

TEST(ValueEquality, RealsCompareWithATolerance) {
  expectEqual(1.0, 1.0 + 9e-10);
  expectUnequal(1.0, 1.0 + 2e-9);
  expectEqual(1, 1.0 - 9e-10);
  expectUnequal(0, 1e-9);
  expectEqual(0, 9e-10);
}

TEST(ValueEquality, AFloatMeetsADoubleInDouble) {
  expectUnequal(0.1F, 0.1);
  expectUnequal(0.1, 0.1F);
  expectEqual(0.5F, 0.5);
}

TEST(ValueEquality, AFloatMeetsAnIntegerInFloat) {
  expectEqual(16777216.0F, 16777217);
  expectEqual(16777217U, 16777216.0F);
  expectUnequal(16777216.0, 16777217);
}

TEST(ValueEquality, TheDifferenceOfInfinitiesIsNoNumber) {
  expectUnequal(std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity());
  expectUnequal(std::numeric_limits<double>::quiet_NaN(), 0);
}

TEST(ValueEquality, StringsCompareByLengthAndBytes) {
  expectEqual("a", "a");
  expectUnequal("a", "b");
  expectUnequal(std::string("a\0b", 3), std::string("a\0c", 3));
  expectUnequal(std::string("a\0", 2), "a");
}

TEST(ValueEquality, BoolsCompareByValue) {
  expectEqual(true, true);
  expectEqual(false, false);
  expectUnequal(true, false);
}

TEST(ValueEquality, NullEqualsNull) {
  expectEqual(Value(), Value());
}

TEST(ValueEquality, ObjectsNeedTheSameKeysAndEqualValues) {
  const Value object = json::Deserialize(R"({"a":1,"b":[2]})");
  expectEqual(object, json::Deserialize(R"({"b":[2.0],"a":1.0})"));
  expectUnequal(object, json::Deserialize(R"({"a":1})"));
  expectUnequal(json::Deserialize(R"({"a":1})"), object);
  expectUnequal(object, json::Deserialize(R"({"a":1,"c":[2]})"));
  expectUnequal(object, json::Deserialize(R"({"a":1,"b":[3]})"));
}

TEST(ValueEquality, ArraysNeedTheSameLengthAndEqualElements) {
  const Value array = json::Deserialize("[1,2]");
  expectEqual(array, json::Deserialize("[1.0,2]"));
  expectUnequal(array, json::Deserialize("[2,1]"));
  expectUnequal(array, json::Deserialize("[1]"));
  expectUnequal(json::Deserialize("[1]"), array);
}

TEST(ValueEquality, WhatIsEmptyOnTheLeftEqualsAnyNumberOnTheRightButNotTheOtherWayRound) {
  for (const Value& empty : kEmpties) {
    for (const auto* numbers : {&kSevens, &kZeros}) {
      for (const Value& number : *numbers) {
        expectEqual(empty, number);
        expectUnequal(number, empty);
      }
    }
  }
  EXPECT_TRUE(Value() == 7);
  EXPECT_FALSE(7 == Value());
  EXPECT_FALSE(Value() != 7);
  EXPECT_TRUE(7 != Value());
}

TEST(ValueEquality, ANumberThatWasReadIsNoMoreEqual) {
  expectEqual(false, json::Deserialize("7"));
  expectEqual("", json::Deserialize("7"));
  expectUnequal(json::Deserialize("7"), false);
}

TEST(ValueEquality, WhatHoldsSomethingEqualsNoNumber) {
  const Value object = json::Deserialize(R"({"a":1})");
  const Value array = json::Deserialize("[7]");
  for (const Value& left : {Value("7"), Value(true), object, array}) {
    for (const Value& number : kSevens) {
      expectUnequal(left, number);
      expectUnequal(number, left);
    }
  }
}

TEST(ValueEquality, OtherKindsAreUnequal) {
  for (const Value& left : kEmpties) {
    for (const Value& right : kEmpties) {
      if (left.GetType() != right.GetType()) expectUnequal(left, right);
    }
  }
}

TEST(ValueEquality, TheAsymmetryHoldsInsideContainers) {
  expectEqual(json::Deserialize("[null]"), json::Deserialize("[7]"));
  expectUnequal(json::Deserialize("[7]"), json::Deserialize("[null]"));
  expectEqual(json::Deserialize(R"({"a":""})"), json::Deserialize(R"({"a":7})"));
  expectUnequal(json::Deserialize(R"({"a":7})"), json::Deserialize(R"({"a":""})"));
}

}  // namespace
