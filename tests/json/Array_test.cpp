// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

json::Array SampleArray() {
  json::Array array;
  array.push_back(1);
  array.push_back("two");
  return array;
}

TEST(Array, StartsEmpty) {
  const json::Array array;
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.size(), 0u);
  EXPECT_EQ(array.begin(), array.end());
}

TEST(Array, AppendsCopiesAndMovedValues) {
  json::Array array = SampleArray();
  const json::Value copied = 3;
  array.push_back(copied);
  array.push_back(json::Value(array));
  array.emplace_back(true);
  EXPECT_EQ(json::SerializeArray(array), R"([1,"two",3,[1,"two",3],true])");
}

TEST(Array, AppendsItsOwnElement) {
  json::Array array = SampleArray();
  for (int i = 0; i < 20; ++i) array.push_back(array[1]);
  for (std::size_t i = 1; i < array.size(); ++i) EXPECT_EQ(array[i].ToString(), "two");
}

TEST(Array, InsertsBeforeTheIndex) {
  json::Array array = SampleArray();
  EXPECT_EQ(array.insert(0, "first")->ToString(), "first");
  array.insert(2, nullptr);
  EXPECT_EQ(json::SerializeArray(array), R"(["first",1,null,"two"])");
}

TEST(Array, InsertAtOrPastTheEndAppends) {
  json::Array array = SampleArray();
  array.insert(2, 3);
  array.insert(100, 4);
  array.insert(static_cast<std::size_t>(-1), 5);
  EXPECT_EQ(json::SerializeArray(array), R"([1,"two",3,4,5])");
}

TEST(Array, ClearLeavesNothing) {
  json::Array array = SampleArray();
  array.Clear();
  EXPECT_TRUE(array.empty());
}

TEST(Array, FindsTheFirstEqualElement) {
  json::Array array = SampleArray();
  array.push_back(1.0);
  EXPECT_EQ(array.find(1), array.begin());
  EXPECT_EQ(array.find("two"), array.begin() + 1);
  EXPECT_EQ(array.find("three"), array.end());
  EXPECT_TRUE(array.HasValue(1u));
  EXPECT_TRUE(std::as_const(array).HasValue("two"));
  EXPECT_FALSE(array.HasValue(false));
}

TEST(Array, FindComparesWithTheElementOnTheLeft) {
  json::Array nulls;
  nulls.push_back(nullptr);
  EXPECT_TRUE(nulls.HasValue(7));

  json::Array numbers;
  numbers.push_back(7);
  EXPECT_FALSE(numbers.HasValue(nullptr));
}

TEST(Array, MayBeAssignedFromAPartOfItself) {
  json::Value copied = json::Deserialize("[1,[2,[3]]]");
  copied.ToArray() = copied[1].ToArray();
  EXPECT_EQ(json::Serialize(copied), "[2,[3]]");

  json::Value moved = json::Deserialize("[1,[2,[3]]]");
  moved.ToArray() = std::move(moved[1][1].ToArray());
  EXPECT_EQ(json::Serialize(moved), "[3]");
}

TEST(Array, GivesAPartOfItselfACopy) {
  json::Value copied = json::Deserialize("[1,{\"a\":[2]}]");
  copied[1]["a"].ToArray() = copied.ToArray();
  EXPECT_EQ(json::Serialize(copied), R"([1,{"a":[1,{"a":[2]}]}])");

  json::Value moved = json::Deserialize("[1,{\"a\":[2]}]");
  moved[1]["a"].ToArray() = std::move(moved.ToArray());
  EXPECT_EQ(moved, copied);
}

TEST(Array, MayBeAssignedToItself) {
  json::Array array = SampleArray();
  json::Array& same = array;
  array = std::as_const(same);
  EXPECT_EQ(array, SampleArray());
  array = std::move(same);
  EXPECT_EQ(array, SampleArray());
}

TEST(Array, AppendsACopyOfTheValueThatItIsAPartOf) {
  json::Value moved = SampleArray();
  moved.ToArray().push_back(std::move(moved));
  EXPECT_EQ(json::Serialize(moved), R"([1,"two",[1,"two"]])");

  json::Value copied = SampleArray();
  copied.ToArray().push_back(copied);
  EXPECT_EQ(copied, moved);

  json::Value emplaced = SampleArray();
  const json::Value& appended = emplaced.ToArray().emplace_back(std::move(emplaced));
  EXPECT_EQ(&appended, &emplaced[2]);
  EXPECT_EQ(emplaced, moved);

  json::Value whole = json::Deserialize(R"({"a":[]})");
  whole["a"].ToArray().emplace_back(std::move(whole));
  EXPECT_EQ(json::Serialize(whole), R"({"a":[{"a":[]}]})");
}

TEST(Array, InsertsACopyOfTheValueThatItIsAPartOf) {
  json::Value moved = SampleArray();
  moved.ToArray().insert(1, std::move(moved));
  EXPECT_EQ(json::Serialize(moved), R"([1,[1,"two"],"two"])");

  json::Value copied = SampleArray();
  copied.ToArray().insert(1, copied);
  EXPECT_EQ(copied, moved);
}

TEST(Array, TakesItsOwnElements) {
  json::Array array = SampleArray();
  array.insert(0, array[1]);
  array.insert(0, std::move(array[0]));
  array.push_back(std::move(array[0]));
  EXPECT_EQ(json::SerializeArray(array), R"(["","",1,"two","two"])");
}

TEST(Array, HoldsItsFormerSelfWhenItIsMovedIntoAnElement) {
  json::Array array = SampleArray();
  array.push_back(std::move(array));
  EXPECT_EQ(json::SerializeArray(array), R"([[1,"two"]])");
}

TEST(Array, MayBeEmplacedInAPartOfItself) {
  json::Array array;
  array.push_back(json::Array());
  array[0].ToArray().emplace_back(std::move(array));
  EXPECT_TRUE(array.empty());
}

TEST(Array, CopiesAreIndependent) {
  json::Array array = SampleArray();
  json::Array copy = array;
  copy[0] = 5;
  EXPECT_EQ(array[0].ToInt(), 1);
}

}  // namespace
