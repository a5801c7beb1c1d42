// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "tessel/json.h"

namespace {

using json::Value;

// "Equal" must say the same through == and !=, whichever form the compiler chooses.
void ExpectEqual(const Value& left, const Value& right) {
  EXPECT_TRUE(left == right) << json::SerializeValue(left) << " == " << json::SerializeValue(right);
  EXPECT_FALSE(left != right) << json::SerializeValue(left) << " != " << json::SerializeValue(right);
}

void ExpectUnequal(const Value& left, const Value& right) {
  EXPECT_FALSE(left == right) << json::SerializeValue(left) << " == " << json::SerializeValue(right);
  EXPECT_TRUE(left != right) << json::SerializeValue(left) << " != " << json::SerializeValue(right);
}

const std::vector<Value> kSevens = {7, 7L, 7.0F, 7.0, 7U};
const std::vector<Value> kZeros = {0, 0L, 0.0F, 0.0, 0U};
const std::vector<Value> kEmpties = {Value(), "", json::Object(), json::Array(), false};

TEST(ValueEquality, NumbersOfAllKindsCompareByValue) {
  for (const Value& left : kSevens) {
    for (const Value& right : kSevens) ExpectEqual(left, right);
    for (const Value& right : kZeros) ExpectUnequal(left, right);
  }
}

TEST(ValueEquality, IntegersCompareExactly) {
  constexpr long big = std::numeric_limits<long>::max();
  ExpectUnequal(big, big - 1);
  ExpectEqual(big, big);
  ExpectUnequal(-1, std::numeric_limits<unsigned int>::max());
  ExpectEqual(4294967295L, 4294967295U);
}

TEST(ValueEquality, RealsCompareWithATolerance) {
  ExpectEqual(1.0, 1.0 + 9e-10);
  ExpectUnequal(1.0, 1.0 + 2e-9);
  ExpectEqual(1, 1.0 - 9e-10);
  ExpectUnequal(0, 1e-9);
  ExpectEqual(0, 9e-10);
}

TEST(ValueEquality, AFloatMeetsADoubleInDouble) {
  ExpectUnequal(0.1F, 0.1);
  ExpectUnequal(0.1, 0.1F);
  ExpectEqual(0.5F, 0.5);
}

TEST(ValueEquality, AFloatMeetsAnIntegerInFloat) {
  ExpectEqual(16777216.0F, 16777217);
  ExpectEqual(16777217U, 16777216.0F);
  ExpectUnequal(16777216.0, 16777217);
}

TEST(ValueEquality, TheDifferenceOfInfinitiesIsNoNumber) {
  ExpectUnequal(std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity());
  ExpectUnequal(std::numeric_limits<double>::quiet_NaN(), 0);
}

TEST(ValueEquality, StringsCompareByLengthAndBytes) {
  ExpectEqual("a", "a");
  ExpectUnequal("a", "b");
  ExpectUnequal(std::string("a\0b", 3), std::string("a\0c", 3));
  ExpectUnequal(std::string("a\0", 2), "a");
}

TEST(ValueEquality, BoolsCompareByValue) {
  ExpectEqual(true, true);
  ExpectEqual(false, false);
  ExpectUnequal(true, false);
}

TEST(ValueEquality, NullEqualsNull) {
  ExpectEqual(Value(), Value());
}

TEST(ValueEquality, ObjectsNeedTheSameKeysAndEqualValues) {
  const Value object = json::Deserialize(R"({"a":1,"b":[2]})");
  ExpectEqual(object, json::Deserialize(R"({"b":[2.0],"a":1.0})"));
  ExpectUnequal(object, json::Deserialize(R"({"a":1})"));
  ExpectUnequal(json::Deserialize(R"({"a":1})"), object);
  ExpectUnequal(object, json::Deserialize(R"({"a":1,"c":[2]})"));
  ExpectUnequal(object, json::Deserialize(R"({"a":1,"b":[3]})"));
}

TEST(ValueEquality, ArraysNeedTheSameLengthAndEqualElements) {
  const Value array = json::Deserialize("[1,2]");
  ExpectEqual(array, json::Deserialize("[1.0,2]"));
  ExpectUnequal(array, json::Deserialize("[2,1]"));
  ExpectUnequal(array, json::Deserialize("[1]"));
  ExpectUnequal(json::Deserialize("[1]"), array);
}

TEST(ValueEquality, WhatIsEmptyOnTheLeftEqualsAnyNumberOnTheRightButNotTheOtherWayRound) {
  for (const Value& empty : kEmpties) {
    for (const auto* numbers : {&kSevens, &kZeros}) {
      for (const Value& number : *numbers) {
        ExpectEqual(empty, number);
        ExpectUnequal(number, empty);
      }
    }
  }
  EXPECT_TRUE(Value() == 7);
  EXPECT_FALSE(7 == Value());
  EXPECT_FALSE(Value() != 7);
  EXPECT_TRUE(7 != Value());
}

TEST(ValueEquality, ANumberThatWasReadIsNoMoreEqual) {
  ExpectEqual(false, json::Deserialize("7"));
  ExpectEqual("", json::Deserialize("7"));
  ExpectUnequal(json::Deserialize("7"), false);
}

TEST(ValueEquality, WhatHoldsSomethingEqualsNoNumber) {
  const Value object = json::Deserialize(R"({"a":1})");
  const Value array = json::Deserialize("[7]");
  for (const Value& left : {Value("7"), Value(true), object, array}) {
    for (const Value& number : kSevens) {
      ExpectUnequal(left, number);
      ExpectUnequal(number, left);
    }
  }
}

TEST(ValueEquality, OtherKindsAreUnequal) {
  for (const Value& left : kEmpties) {
    for (const Value& right : kEmpties) {
      if (left.GetType() != right.GetType()) ExpectUnequal(left, right);
    }
  }
}

TEST(ValueEquality, TheAsymmetryHoldsInsideContainers) {
  ExpectEqual(json::Deserialize("[null]"), json::Deserialize("[7]"));
  ExpectUnequal(json::Deserialize("[7]"), json::Deserialize("[null]"));
  ExpectEqual(json::Deserialize(R"({"a":""})"), json::Deserialize(R"({"a":7})"));
  ExpectUnequal(json::Deserialize(R"({"a":7})"), json::Deserialize(R"({"a":""})"));
}

}  // namespace
