// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

json::Object SampleObject() {
  json::Object object;
  object["b"] = 2;
  object["a"] = 1;
  return object;
}

TEST(Object, IteratesInByteOrderOfTheKeys) {
  json::Object object;
  for (const char* key : {"b", "\xff", "B", "", "a", "ab"}) object[key] = 1;
  std::vector<std::string> keys;
  for (const auto& [key, value] : object) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"", "B", "a", "ab", "b", "\xff"}));
}

TEST(Object, StartsEmpty) {
  const json::Object object;
  EXPECT_TRUE(object.empty());
  EXPECT_EQ(object.size(), 0u);
  EXPECT_EQ(object.begin(), object.end());
}

TEST(Object, FindsMembersByKey) {
  const json::Object object = SampleObject();
  EXPECT_TRUE(object.HasKey("a"));
  EXPECT_FALSE(object.HasKey("A"));
  EXPECT_EQ(object.find("b")->second.ToInt(), 2);
  EXPECT_EQ(object.find("c"), object.end());
  EXPECT_EQ(object["a"].ToInt(), 1);
}

TEST(Object, KeysMayHoldAnyBytes) {
  json::Object object;
  object[std::string("a\0b", 3)] = 1;
  EXPECT_TRUE(object.HasKey(std::string_view("a\0b", 3)));
  EXPECT_FALSE(object.HasKey("a"));
}

TEST(Object, InsertsNullForAMissingKey) {
  json::Object object;
  EXPECT_EQ(object["new"].GetType(), json::NullVal);
  EXPECT_EQ(object.size(), 1u);
}

TEST(Object, EmplaceAndInsertKeepAPresentMember) {
  json::Object object = SampleObject();
  EXPECT_FALSE(object.emplace("a", 9).second);
  EXPECT_FALSE(object.insert({"b", 9}).second);
  EXPECT_TRUE(object.emplace("c", 3).second);
  EXPECT_TRUE(object.insert({"d", 4}).second);
  EXPECT_EQ(json::Serialize(object), R"({"a":1,"b":2,"c":3,"d":4})");
}

TEST(Object, InsertOrAssignReplacesAndReturnsTheMember) {
  json::Object object = SampleObject();
  object.insert_or_assign("a", 9).MergeValue(10);
  object.insert_or_assign("0", 0);
  EXPECT_EQ(json::Serialize(object), R"({"0":0,"a":10,"b":2})");
}

TEST(Object, EraseReturnsTheNumberOfMembersRemoved) {
  json::Object object = SampleObject();
  EXPECT_EQ(object.Erase("a"), 1u);
  EXPECT_EQ(object.Erase("a"), 0u);
  EXPECT_EQ(json::Serialize(object), R"({"b":2})");
}

TEST(Object, ClearLeavesNothing) {
  json::Object object = SampleObject();
  object.Clear();
  EXPECT_TRUE(object.empty());
}

json::Value Nested() {
  return json::Deserialize(R"({"a":{"b":{"c":1}},"d":2})");
}

TEST(Object, MayBeAssignedFromAPartOfItself) {
  json::Value copied = Nested();
  copied.ToObject() = copied["a"].ToObject();
  EXPECT_EQ(json::Serialize(copied), R"({"b":{"c":1}})");

  json::Value moved = Nested();
  moved.ToObject() = std::move(moved["a"]["b"].ToObject());
  EXPECT_EQ(json::Serialize(moved), R"({"c":1})");
}

TEST(Object, GivesAPartOfItselfACopy) {
  json::Value copied = Nested();
  copied["a"]["b"].ToObject() = copied.ToObject();
  EXPECT_EQ(json::Serialize(copied), R"({"a":{"b":{"a":{"b":{"c":1}},"d":2}},"d":2})");

  json::Value moved = Nested();
  moved["a"]["b"].ToObject() = std::move(moved.ToObject());
  EXPECT_EQ(moved, copied);
}

TEST(Object, MayBeAssignedToItself) {
  json::Object object = SampleObject();
  json::Object& same = object;
  object = std::as_const(same);
  EXPECT_EQ(object, SampleObject());
  object = std::move(same);
  EXPECT_EQ(object, SampleObject());
}

TEST(Object, InsertsACopyOfTheValueThatItIsAPartOf) {
  json::Value emplaced = SampleObject();
  EXPECT_TRUE(emplaced.ToObject().emplace("c", std::move(emplaced)).second);
  EXPECT_EQ(json::Serialize(emplaced), R"({"a":1,"b":2,"c":{"a":1,"b":2}})");

  json::Value assigned = Nested();
  assigned["a"].ToObject().insert_or_assign("b", std::move(assigned));
  EXPECT_EQ(json::Serialize(assigned), R"({"a":{"b":{"a":{"b":{"c":1}},"d":2}},"d":2})");

  json::Value copied = SampleObject();
  copied.ToObject().insert_or_assign("a", copied);
  EXPECT_EQ(json::Serialize(copied), R"({"a":{"a":1,"b":2},"b":2})");
}

TEST(Object, InsertsItsOwnMembers) {
  json::Value value = Nested();
  json::Object& object = value.ToObject();
  object.insert_or_assign("e", object["d"]);
  object.insert_or_assign("d", std::move(object["a"]));
  object.emplace("f", object["d"]);
  object.Erase("a");
  EXPECT_EQ(json::Serialize(value), R"({"d":{"b":{"c":1}},"e":2,"f":{"b":{"c":1}}})");
}

TEST(Object, HoldsItsFormerSelfWhenItIsMovedIntoAMember) {
  json::Object object = SampleObject();
  object.insert_or_assign("c", std::move(object));
  EXPECT_EQ(json::Serialize(object), R"({"c":{"a":1,"b":2}})");
}

TEST(Object, InsertsOrAssignsALvalueAsACopy) {
  const json::Value text = "text";
  json::Object object;
  object.insert_or_assign("a", text);
  EXPECT_TRUE(object.emplace("b", text).second);
  EXPECT_EQ(text.ToString(), "text");
  EXPECT_EQ(json::Serialize(object), R"({"a":"text","b":"text"})");
}

TEST(Object, CopiesAreIndependent) {
  json::Object object = SampleObject();
  json::Object copy = object;
  copy["a"] = 5;
  EXPECT_EQ(object["a"].ToInt(), 1);
}

}  // namespace
