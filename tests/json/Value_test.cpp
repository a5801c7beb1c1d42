// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <type_traits>

#include "tessel/json.h"

namespace {

using json::Value;

static_assert(std::is_nothrow_move_constructible_v<Value> && std::is_nothrow_move_assignable_v<Value>);
static_assert(!std::is_constructible_v<Value, int*>, "a pointer is no bool");

Value SampleValue() {
  return json::Deserialize(R"({"a":1,"list":[1,[2]],"text":"a text too long for its own place"})");
}

TEST(Value, TypeCodesAreFixed) {
  EXPECT_EQ(Value().GetType(), 0);
  EXPECT_EQ(Value("").GetType(), 1);
  EXPECT_EQ(Value(1).GetType(), 2);
  EXPECT_EQ(Value(1L).GetType(), 3);
  EXPECT_EQ(Value(1LL).GetType(), 3);
  EXPECT_EQ(Value(1.0F).GetType(), 4);
  EXPECT_EQ(Value(1.0).GetType(), 5);
  EXPECT_EQ(Value(json::Object()).GetType(), 6);
  EXPECT_EQ(Value(json::Array()).GetType(), 7);
  EXPECT_EQ(Value(true).GetType(), 8);
  EXPECT_EQ(Value(1U).GetType(), 9);
}

TEST(Value, EachKindFillsItsOwnRepresentation) {
  EXPECT_EQ(Value(-7).ToInt(), -7);
  EXPECT_EQ(Value(4000000000U).ToUnsignedInt(), 4000000000U);
  EXPECT_EQ(Value(-5000000000L).ToInt64(), -5000000000);
  EXPECT_EQ(Value(1.5F).ToFloat(), 1.5F);
  EXPECT_EQ(Value(2.5).ToDouble(), 2.5);
  EXPECT_TRUE(Value(true).ToBool());
  EXPECT_EQ(Value("text").ToString(), "text");
  EXPECT_EQ(Value(std::string("a\0b", 3)).ToString(), std::string("a\0b", 3));
}

TEST(Value, OtherRepresentationsOfABuiltValueAreZero) {
  for (const Value& value : {Value(), Value("7"), Value(json::Array())}) {
    EXPECT_EQ(value.ToInt(), 0);
    EXPECT_EQ(value.ToUnsignedInt(), 0U);
    EXPECT_EQ(value.ToInt64(), 0);
    EXPECT_EQ(value.ToFloat(), 0);
    EXPECT_EQ(value.ToDouble(), 0);
    EXPECT_FALSE(value.ToBool());
  }
  EXPECT_EQ(Value(7).ToDouble(), 0);
  EXPECT_EQ(Value(7.0).ToInt(), 0);
  EXPECT_FALSE(Value(7).ToBool());
}

TEST(Value, ANullPointerGivesNull) {
  const char* none = nullptr;
  EXPECT_EQ(Value(none).GetType(), json::NullVal);
  EXPECT_EQ(Value(nullptr).GetType(), json::NullVal);
}

TEST(Value, ObjectsAndArraysAreTakenByCopyOrMove) {
  json::Object object;
  object["a"] = "text";
  const Value copy(object);
  EXPECT_EQ(object.size(), 1u);
  EXPECT_EQ(Value(std::move(object)), copy);

  json::Array array;
  array.push_back(1);
  const Value arrayCopy(array);
  EXPECT_EQ(array.size(), 1u);
  EXPECT_EQ(Value(std::move(array)), arrayCopy);
}

TEST(Value, SizeCountsMembersAndElements) {
  EXPECT_EQ(Value(json::Object()).size(), 0u);
  EXPECT_EQ(Value(json::Array()).size(), 0u);
  EXPECT_EQ(SampleValue().size(), 3u);
  EXPECT_EQ(SampleValue()["list"].size(), 2u);
}

TEST(Value, SizeOfEveryOtherKindIsOne) {
  for (const Value& value :
       {Value(), Value(""), Value(0), Value(0L), Value(0.0F), Value(0.0), Value(false), Value(0U)}) {
    EXPECT_EQ(value.size(), 1u) << value.GetType();
  }
}

TEST(Value, IndexesArraysWithAnyInteger) {
  Value value = SampleValue()["list"];
  const Value& constant = value;
  EXPECT_EQ(value[0].ToInt(), 1);
  EXPECT_EQ(constant[0].ToInt(), 1);
  EXPECT_EQ(value[1U][0L].ToInt(), 2);
  EXPECT_EQ(constant[std::size_t{1}][0].ToInt(), 2);
  value[0] = "changed";
  EXPECT_EQ(constant[0].ToString(), "changed");
}

TEST(Value, InsertsNullForAMissingKey) {
  Value value = json::Object();
  EXPECT_EQ(value["new"].GetType(), json::NullVal);
  EXPECT_EQ(value[std::string("other")].GetType(), json::NullVal);
  EXPECT_EQ(value.size(), 2u);
  value["new"] = 5;
  EXPECT_EQ(value["new"].ToInt(), 5);
}

TEST(Value, AConstObjectLooksKeysUpWithoutInserting) {
  const Value value = SampleValue();
  EXPECT_EQ(value["a"].ToInt(), 1);
  EXPECT_EQ(value[std::string("a")].ToInt(), 1);
  EXPECT_FALSE(value.HasKey("b"));
  EXPECT_EQ(value.size(), 3u);
}

TEST(Value, HasKeysReturnsTheIndexOfTheFirstMissingKey) {
  const Value one = json::Deserialize(R"({"a":1})");
  const Value two = json::Deserialize(R"({"a":1,"b":2})");
  EXPECT_EQ(one.HasKeys({"a", "b"}), 1);
  EXPECT_EQ(two.HasKeys({"a", "b"}), -1);
  EXPECT_EQ(one.HasKeys({"x", "y"}), 0);
  EXPECT_EQ(one.HasKeys(std::vector<std::string>()), -1);

  const char* keys[] = {"a", "b"};
  EXPECT_EQ(one.HasKeys(keys, 2), 1);
  EXPECT_EQ(one.HasKeys(keys, 1), -1);
  EXPECT_EQ(two.HasKeys(keys, 2), -1);
  EXPECT_EQ(one.HasKeys(keys, 0), -1);
  const char* others[] = {"x", "a"};
  EXPECT_EQ(one.HasKeys(others, 2), 0);
}

TEST(Value, ChangesInPlaceThroughReferences) {
  Value value = SampleValue();
  value["list"].ToArray().push_back(3);
  value.ToObject().Erase("a");
  value["text"].ToString() += '!';
  EXPECT_EQ(json::Serialize(value), R"({"list":[1,[2],3],"text":"a text too long for its own place!"})");
}

TEST(Value, AnEmptyContainerCanBeFilled) {
  Value object = json::Object();
  Value moved = std::move(object);
  moved.ToObject()["a"] = 1;
  Value array = json::Array();
  array.ToArray().push_back(1);
  EXPECT_EQ(moved.size() + array.size(), 2u);
}

TEST(Value, CopiesAreDeep) {
  Value original = SampleValue();
  Value copy = original;
  copy["list"][1][0] = "changed";
  EXPECT_EQ(original, SampleValue());
  Value assigned;
  assigned = original;
  assigned["a"] = 2;
  EXPECT_EQ(original, SampleValue());
}

TEST(Value, MovesTakeTheContents) {
  Value original = SampleValue();
  const json::Object* const members = &original.ToObject();
  const Value moved = std::move(original);
  EXPECT_EQ(&moved.ToObject(), members);
  EXPECT_EQ(moved, SampleValue());
}

TEST(Value, AssignmentTakesAValueOfEveryKind) {
  const Value values[] = {
      Value(),     Value("text"), Value(-7),   Value(std::int64_t{1} << 40), Value(7U),
      Value(0.5F), Value(0.25),   Value(true), Value(json::Object()),        Value(json::Array())};
  for (const Value& value : values) {
    Value copied("former");
    copied = value;
    EXPECT_EQ(copied.GetType(), value.GetType());
    EXPECT_EQ(copied, value);
    Value moved(false);
    moved = std::move(copied);
    EXPECT_EQ(moved.GetType(), value.GetType());
    EXPECT_EQ(moved, value);
  }
}

TEST(Value, AssignmentLeavesNothingOfTheFormerKind) {
  Value value = SampleValue();
  value = 5;
  EXPECT_EQ(value.GetType(), json::IntVal);
  value = "text";
  EXPECT_EQ(value.ToInt(), 0);
  value = nullptr;
  EXPECT_EQ(value.GetType(), json::NullVal);
  value = json::Object();
  EXPECT_EQ(value.size(), 0u);
}

TEST(Value, MayBeAssignedFromAPartOfItself) {
  Value copied = SampleValue();
  copied = copied["list"];
  EXPECT_EQ(json::Serialize(copied), "[1,[2]]");
  Value moved = SampleValue();
  moved = std::move(moved["list"]);
  EXPECT_EQ(json::Serialize(moved), "[1,[2]]");
  Value nested = SampleValue();
  nested["list"] = nested;
  EXPECT_EQ(nested["list"], SampleValue());
}

TEST(Value, MayBeAssignedToItself) {
  Value value = SampleValue();
  Value& same = value;
  value = std::as_const(same);
  EXPECT_EQ(value, SampleValue());
  value = std::move(same);
  EXPECT_EQ(value, SampleValue());
}

TEST(Value, IsCopiedWhenItIsMovedIntoAPartOfItself) {
  Value object = SampleValue();
  object["copy"] = std::move(object);
  Value expected = SampleValue();
  expected["copy"] = nullptr;
  EXPECT_EQ(object["copy"], expected);
  expected["copy"] = Value(expected);
  EXPECT_EQ(object, expected);

  Value deep = SampleValue();
  deep["list"][1][0] = std::move(deep);
  EXPECT_EQ(deep["list"][1][0], SampleValue());
  EXPECT_EQ(deep["a"].ToInt(), 1);

  Value array = json::Deserialize("[1,[2]]");
  array[1][0] = std::move(array);
  EXPECT_EQ(json::Serialize(array), "[1,[[1,[2]]]]");
}

TEST(Value, MayBeSwappedWithAPartOfItself) {
  Value value = SampleValue();
  std::swap(value, value["list"]);
  EXPECT_EQ(json::Serialize(value), "[1,[2]]");
}

}  // namespace
