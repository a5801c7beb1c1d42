// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <type_traits>

#include "tessel/json.h"

namespace {

static_assert(std::is_base_of_v<json::Value, jsonHelper> && std::is_convertible_v<jsonHelper*, json::Value*>);
static_assert(std::is_same_v<kalStore::jsonHelper, jsonHelper>);
static_assert(std::is_nothrow_move_constructible_v<jsonHelper>);

jsonHelper SampleHelper() {
  return json::Deserialize(
      R"({"a":1,"text":"words","real":1.5,"yes":true,"large":3000000000,"huge":5000000000,)"
      R"("object":{"inner":{"n":7}},"array":[1,2],"null":null})");
}

TEST(jsonHelper, IsNullWhenMadeFromNothing) {
  EXPECT_FALSE(jsonHelper().IsValid());
  EXPECT_EQ(jsonHelper().GetType(), json::NullVal);
}

TEST(jsonHelper, HoldsACopyOfAnObjectOrValue) {
  json::Object object;
  object["a"] = 1;
  const jsonHelper fromObject(object);
  const json::Value value(object);
  const jsonHelper fromValue(value);
  object["a"] = 2;
  EXPECT_EQ(fromObject["a"].ToInt(0), 1);
  EXPECT_EQ(fromValue["a"].ToInt(0), 1);
  EXPECT_EQ(fromObject.GetType(), json::ObjectVal);
}

TEST(jsonHelper, WalksIntoADocument) {
  const jsonHelper h = SampleHelper();
  EXPECT_EQ(h["object"]["inner"]["n"].ToInt(0), 7);
  EXPECT_EQ(h[std::string("object")][std::string("inner")]["n"].ToInt(0), 7);
}

TEST(jsonHelper, AnswersNullWhereThereIsNothing) {
  const jsonHelper h = SampleHelper();
  EXPECT_FALSE(h["missing"].IsValid());
  EXPECT_FALSE(h["null"].IsValid());
  EXPECT_FALSE(h[nullptr].IsValid());
  EXPECT_FALSE(h["array"]["a"].IsValid());
  EXPECT_FALSE(h["text"][std::string("a")].IsValid());
  EXPECT_FALSE(h["missing"]["deeper"]["still"].IsValid());
  EXPECT_EQ(h["a"]["b"].ToInt(5), 5);
}

TEST(jsonHelper, NavigationNeverInserts) {
  jsonHelper h = SampleHelper();
  const std::size_t before = h.size();
  EXPECT_FALSE(h["missing"].IsValid());
  EXPECT_FALSE(h[std::string("missing")].IsValid());
  EXPECT_EQ(h.size(), before);
}

TEST(jsonHelper, EverythingButNullIsValid) {
  const jsonHelper h = SampleHelper();
  for (const char* key : {"a", "text", "real", "yes", "large", "huge", "object", "array"}) {
    EXPECT_TRUE(h[key].IsValid()) << key;
  }
}

// One row per kind of value, one column per typed read: read is true where the value comes out, the default
// elsewhere.
TEST(jsonHelper, ReadsMatchTheKindExactly) {
  struct {
    json::Value value;
    bool asInt, asUnsigned, asFloat, asDouble, asBool, asString, asObject, asArray;
  } const rows[] = {
      {json::Deserialize("1"), true, false, false, false, false, false, false, false},
      {json::Deserialize("3000000000"), false, true, false, false, false, false, false, false},
      {json::Deserialize("5000000000"), false, false, false, false, false, false, false, false},
      {json::Value(1.5F), false, false, true, false, false, false, false, false},
      {json::Deserialize("1.5"), false, false, false, true, false, false, false, false},
      {json::Deserialize("true"), false, false, false, false, true, false, false, false},
      {json::Deserialize("\"1\""), false, false, false, false, false, true, false, false},
      {json::Deserialize("{\"a\":1}"), false, false, false, false, false, false, true, false},
      {json::Deserialize("[1]"), false, false, false, false, false, false, false, true},
      {json::Value(), false, false, false, false, false, false, false, false},
  };
  for (const auto& row : rows) {
    const jsonHelper h(row.value);
    EXPECT_EQ(h.ToInt(-9) != -9, row.asInt) << row.value.GetType();
    EXPECT_EQ(h.ToUnsignedInt(9) != 9, row.asUnsigned) << row.value.GetType();
    EXPECT_EQ(h.ToFloat(-9) != -9, row.asFloat) << row.value.GetType();
    EXPECT_EQ(h.ToDouble(-9) != -9, row.asDouble) << row.value.GetType();
    EXPECT_EQ(h.ToBool(false), row.asBool) << row.value.GetType();
    EXPECT_EQ(h.ToBool(true), true) << row.value.GetType();
    EXPECT_EQ(h.ToString("default") != "default", row.asString) << row.value.GetType();
    EXPECT_EQ(h.ToObject().size() == 1, row.asObject) << row.value.GetType();
    EXPECT_EQ(h.ToArray().size() == 1, row.asArray) << row.value.GetType();
  }
}

TEST(jsonHelper, GivesTheStoredValues) {
  const jsonHelper h = SampleHelper();
  EXPECT_EQ(h["a"].ToInt(0), 1);
  EXPECT_EQ(h["large"].ToUnsignedInt(0), 3000000000U);
  EXPECT_EQ(h["real"].ToDouble(0), 1.5);
  EXPECT_EQ(jsonHelper(json::Value(2.5F)).ToFloat(0), 2.5F);
  EXPECT_EQ(h["text"].ToString(""), "words");
  EXPECT_FALSE(jsonHelper(json::Value(false)).ToBool(true));
}

TEST(jsonHelper, DoesNotConvertBetweenNumbers) {
  EXPECT_EQ(jsonHelper(json::Value(7)).ToDouble(1.5), 1.5);
  EXPECT_EQ(jsonHelper(json::Value(3U)).ToInt(7), 7);
  EXPECT_EQ(SampleHelper()["a"].ToDouble(1.5), 1.5);
  EXPECT_EQ(SampleHelper()["real"].ToInt(7), 7);
  EXPECT_EQ(SampleHelper()["real"].ToFloat(7), 7);
}

TEST(jsonHelper, GivesCopiesOfContainers) {
  jsonHelper h = SampleHelper();
  h.ToObject()["a"] = 99;
  EXPECT_EQ(h["a"].ToInt(0), 1);
  json::Array array = h["array"].ToArray();
  array.push_back(3);
  EXPECT_EQ(h["array"].ToArray().size(), 2u);
}

TEST(jsonHelper, ConvertsWithAZeroDefault) {
  const jsonHelper h = SampleHelper();
  const int number = h["a"];
  const unsigned int large = h["large"];
  const double real = h["real"];
  const float single = jsonHelper(json::Value(2.5F));
  const bool yes = h["yes"];
  const std::string text = h["text"];
  const json::Object object = h["object"];
  const json::Array array = h["array"];
  EXPECT_EQ(number, 1);
  EXPECT_EQ(large, 3000000000U);
  EXPECT_EQ(real, 1.5);
  EXPECT_EQ(single, 2.5F);
  EXPECT_TRUE(yes);
  EXPECT_EQ(text, "words");
  EXPECT_EQ(object.size(), 1u);
  EXPECT_EQ(array.size(), 2u);

  const jsonHelper none;
  EXPECT_EQ(static_cast<int>(none), 0);
  EXPECT_EQ(static_cast<unsigned int>(none), 0U);
  EXPECT_EQ(static_cast<float>(none), 0);
  EXPECT_EQ(static_cast<double>(none), 0);
  EXPECT_FALSE(static_cast<bool>(none));
  EXPECT_EQ(static_cast<std::string>(none), "");
  EXPECT_TRUE(none.operator json::Object().empty());
  EXPECT_TRUE(none.operator json::Array().empty());
}

TEST(jsonHelper, TheLogFlagIsNotCopied) {
  jsonHelper logged = SampleHelper();
  EXPECT_FALSE(logged.IsLogEnabled());
  logged.EnableLog(true);
  EXPECT_TRUE(logged.IsLogEnabled());

  const jsonHelper copy(logged);
  EXPECT_FALSE(copy.IsLogEnabled());
  EXPECT_EQ(copy, logged);
  EXPECT_FALSE(logged["object"].IsLogEnabled());

  jsonHelper silent;
  silent = logged;
  EXPECT_FALSE(silent.IsLogEnabled());
  logged = jsonHelper();
  EXPECT_TRUE(logged.IsLogEnabled());
  logged = silent;
  EXPECT_TRUE(logged.IsLogEnabled());
  EXPECT_EQ(logged, SampleHelper());

  const jsonHelper moved(std::move(logged));
  EXPECT_FALSE(moved.IsLogEnabled());
  EXPECT_EQ(moved, SampleHelper());

  logged.EnableLog(false);
  EXPECT_FALSE(logged.IsLogEnabled());
}

TEST(jsonHelper, IsWrittenLikeTheValueItIs) {
  EXPECT_EQ(json::Serialize(SampleHelper()["array"]), "[1,2]");
  json::Value value = SampleHelper()["object"];
  EXPECT_EQ(json::Serialize(value), R"({"inner":{"n":7}})");
}

}  // namespace
