// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

using json::Value;

struct Case {
  const char* into;
  const char* from;
  bool merged;
  const char* result;
};

TEST(ValueMerge, FollowsTheTable) {
  const Case cases[] = {
      // a member that is missing or null takes the other's
      {R"({})", R"({"z":1})", true, R"({"z":1})"},
      {R"({"z":null})", R"({"z":[1]})", true, R"({"z":[1]})"},
      {R"({})", R"({"z":null})", true, R"({"z":null})"},
      {R"({})", R"({"x":{"y":1}})", true, R"({"x":{"y":1}})"},
      // of the same kind: replaced, arrays as a whole
      {R"({"x":1})", R"({"x":2})", true, R"({"x":2})"},
      {R"({"x":[1,2]})", R"({"x":[3]})", true, R"({"x":[3]})"},
      // of another kind: stays, and the rest is merged
      {R"({"x":5})", R"({"x":{"y":1}})", false, R"({"x":5})"},
      {R"({"x":5})", R"({"x":null})", false, R"({"x":5})"},
      {R"({"b":1})", R"({"a":1,"b":"no","c":3})", false, R"({"a":1,"b":1,"c":3})"},
      {R"({"x":1})", R"({"x":1.5})", false, R"({"x":1})"},
      // objects merge recursively, and a false result inside is the whole's
      {R"({"x":{"a":1}})", R"({"x":{"b":2}})", true, R"({"x":{"a":1,"b":2}})"},
      {R"({"x":{"a":1}})", R"({"x":5,"y":6})", false, R"({"x":{"a":1},"y":6})"},
      {R"({"x":{"a":1}})", R"({"x":null})", false, R"({"x":{"a":1}})"},
      {R"({"x":{"a":1}})", R"({"x":{"a":"no","b":2},"y":3})", false, R"({"x":{"a":1,"b":2},"y":3})"},
      // nothing to merge
      {R"({"a":1})", R"({})", true, R"({"a":1})"},
      // other kinds: assigned
      {R"([1])", R"([2,3])", true, R"([2,3])"},
      // kinds that differ
      {R"({"a":1})", R"([1])", false, R"({"a":1})"},
      {R"({"a":1})", R"(null)", false, R"({"a":1})"},
  };
  for (const Case& test : cases) {
    Value value = json::Deserialize(test.into);
    EXPECT_EQ(value.MergeValue(json::Deserialize(test.from)), test.merged) << test.into << " + " << test.from;
    EXPECT_EQ(json::Serialize(value), test.result) << test.into << " + " << test.from;
  }
}

TEST(ValueMerge, AssignsScalarsOfTheSameKind) {
  Value number = 1;
  EXPECT_TRUE(number.MergeValue(2));
  EXPECT_EQ(number.ToInt(), 2);
  EXPECT_FALSE(number.MergeValue(2U));
  EXPECT_FALSE(number.MergeValue(2.0));
  EXPECT_FALSE(number.MergeValue(nullptr));
  EXPECT_EQ(number.ToInt(), 2);
}

TEST(ValueMerge, NullTakesNothing) {
  Value null;
  EXPECT_FALSE(null.MergeValue(1));
  EXPECT_FALSE(null.MergeValue(Value()));
  EXPECT_EQ(null.GetType(), json::NullVal);
}

TEST(ValueMerge, IntoItselfChangesNothing) {
  Value null;
  EXPECT_TRUE(null.MergeValue(null));
  Value object = json::Deserialize(R"({"a":{"b":1}})");
  EXPECT_TRUE(object.MergeValue(object));
  EXPECT_EQ(json::Serialize(object), R"({"a":{"b":1}})");
}

TEST(ValueMerge, TakesAPartOfItself) {
  Value object = json::Deserialize(R"({"a":{"b":1}})");
  EXPECT_TRUE(object.MergeValue(object["a"]));
  EXPECT_EQ(json::Serialize(object), R"({"a":{"b":1},"b":1})");

  // The part lies inside a member that the merge replaces.
  Value array = json::Deserialize(R"({"a":[{"a":[1],"b":2}]})");
  EXPECT_TRUE(array.MergeValue(array["a"][0]));
  EXPECT_EQ(json::Serialize(array), R"({"a":[1],"b":2})");

  Value list = json::Deserialize("[[1]]");
  EXPECT_TRUE(list.MergeValue(list[0]));
  EXPECT_EQ(json::Serialize(list), "[1]");

  // And the other way round: the whole into its part.
  Value whole = json::Deserialize(R"({"a":{}})");
  EXPECT_TRUE(whole["a"].MergeValue(whole));
  EXPECT_EQ(json::Serialize(whole), R"({"a":{"a":{}}})");

  // What the merge adds to the part is not merged again.
  Value chain = json::Deserialize(R"({"a":{"a":{"b":1}}})");
  EXPECT_TRUE(chain.MergeValue(chain["a"]));
  EXPECT_EQ(json::Serialize(chain), R"({"a":{"a":{"b":1},"b":1}})");
}

}  // namespace
