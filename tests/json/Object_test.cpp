#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

json::Object sample() {
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
  const json::Object object = sample();
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
  json::Object object = sample();
  EXPECT_FALSE(object.emplace("a", 9).second);
  EXPECT_FALSE(object.insert({"b", 9}).second);
  EXPECT_TRUE(object.emplace("c", 3).second);
  EXPECT_TRUE(object.insert({"d", 4}).second);
  EXPECT_EQ(json::Serialize(object), R"({"a":1,"b":2,"c":3,"d":4})");
}

TEST(Object, InsertOrAssignReplacesAndReturnsTheMember) {
  json::Object object = sample();
  object.insert_or_assign("a", 9).MergeValue(10);
  object.insert_or_assign("0", 0);
  EXPECT_EQ(json::Serialize(object), R"({"0":0,"a":10,"b":2})");
}

TEST(Object, EraseTellsHowManyMembersWent) {
  json::Object object = sample();
  EXPECT_EQ(object.Erase("a"), 1u);
  EXPECT_EQ(object.Erase("a"), 0u);
  EXPECT_EQ(json::Serialize(object), R"({"b":2})");
}

TEST(Object, ClearLeavesNothing) {
  json::Object object = sample();
  object.Clear();
  EXPECT_TRUE(object.empty());
}

TEST(Object, CopiesAreIndependent) {
  json::Object object = sample();
  json::Object copy = object;
  copy["a"] = 5;
  EXPECT_EQ(object["a"].ToInt(), 1);
}

}  // namespace
