// SPDX-License-Identifier: Apache-2.0
// Using a value as the wrong kind prints one line that programs look for, and aborts; in release builds as
// well.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tessel/json.h"

namespace {

using json::Value;
using testing::HasSubstr;

const std::string kIsArray = ": Assertion `mValueType == ArrayVal' failed.\n";
const std::string kIsObject = ": Assertion `mValueType == ObjectVal' failed.\n";
const std::string kIsString = ": Assertion `mValueType == StringVal' failed.\n";

class ValueDeathTest : public testing::Test {
 protected:
  Value m_number = 1;
  const Value m_constant = 1;
};

TEST_F(ValueDeathTest, AbortsTheProcess) {
  EXPECT_EXIT(m_number["a"], testing::KilledBySignal(SIGABRT), HasSubstr("json:256: "));
}

TEST_F(ValueDeathTest, IndexNeedsAnArray) {
  EXPECT_DEATH(m_number[std::size_t{0}],
               HasSubstr("json:238: json::Value& json::Value::operator[](size_t)" + kIsArray));
  EXPECT_DEATH(m_number[0], HasSubstr("json:238: "));
  EXPECT_DEATH(m_constant[std::size_t{0}],
               HasSubstr("json:244: const json::Value& json::Value::operator[](size_t) const" + kIsArray));
}

TEST_F(ValueDeathTest, KeyNeedsAnObject) {
  EXPECT_DEATH(m_number["a"],
               HasSubstr("json:256: json::Value& json::Value::operator[](const char*)" + kIsObject));
  EXPECT_DEATH(
      m_constant["a"],
      HasSubstr("json:262: const json::Value& json::Value::operator[](const char*) const" + kIsObject));
  EXPECT_DEATH(m_number[std::string("a")],
               HasSubstr(": json::Value& json::Value::operator[](const std::string&)" + kIsObject));
  EXPECT_DEATH(
      m_constant[std::string("a")],
      HasSubstr(": const json::Value& json::Value::operator[](const std::string&) const" + kIsObject));
}

TEST_F(ValueDeathTest, HasKeyNeedsAnObject) {
  EXPECT_DEATH(m_number.HasKey("a"),
               HasSubstr("json:287: bool json::Value::HasKey(const std::string&) const" + kIsObject));
}

TEST_F(ValueDeathTest, HasKeysNeedsAnObject) {
  EXPECT_DEATH(
      m_number.HasKeys({"a"}),
      HasSubstr("json:293: int json::Value::HasKeys(const std::vector<std::string>&) const" + kIsObject));
  const char* keys[] = {"a"};
  EXPECT_DEATH(m_number.HasKeys(keys, 1),
               HasSubstr("json:299: int json::Value::HasKeys(const char**, int) const" + kIsObject));
  EXPECT_DEATH(m_number.HasKeys(nullptr, 0), HasSubstr("json:299: "));
}

TEST_F(ValueDeathTest, ContainersAndStringsAreReadAsTheirOwnKind) {
  EXPECT_DEATH(m_number.ToString(), HasSubstr(": std::string& json::Value::ToString()" + kIsString));
  EXPECT_DEATH(m_constant.ToString(),
               HasSubstr(": const std::string& json::Value::ToString() const" + kIsString));
  EXPECT_DEATH(m_number.ToObject(), HasSubstr("json:394: json::Object& json::Value::ToObject()" + kIsObject));
  EXPECT_DEATH(m_constant.ToObject(),
               HasSubstr("json:394: const json::Object& json::Value::ToObject() const" + kIsObject));
  EXPECT_DEATH(m_number.ToArray(), HasSubstr("json:395: json::Array& json::Value::ToArray()" + kIsArray));
  EXPECT_DEATH(m_constant.ToArray(),
               HasSubstr("json:395: const json::Array& json::Value::ToArray() const" + kIsArray));
}

TEST_F(ValueDeathTest, EveryOtherKindIsRefused) {
  for (Value value : {Value(), Value("text"), Value(true), Value(1.5), Value(json::Array())}) {
    EXPECT_DEATH(value["a"], HasSubstr("json:256: ")) << value.GetType();
  }
  for (Value value : {Value(), Value("text"), Value(true), Value(1.5), Value(json::Object())}) {
    EXPECT_DEATH(value[0], HasSubstr("json:238: ")) << value.GetType();
  }
}

TEST(Value, NumbersAndBoolsAreReadFromAnyKindWithoutAssertion) {
  const Value text = "text";
  EXPECT_EQ(text.ToInt() + text.ToInt64(), 0);
  EXPECT_FALSE(text.ToBool());
}

}  // namespace
