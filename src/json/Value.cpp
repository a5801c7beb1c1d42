// SPDX-License-Identifier: Apache-2.0
#include "tessel/json_value.h"

#include "json/KindAssertion.h"
#include "json/Parts.h"
#include "tessel/json_array.h"
#include "tessel/json_object.h"

namespace json {

using namespace kalStore::internal;

static_assert(sizeof(Value) <= 88,
              "documents are held in values: their size is the memory that a document takes");

namespace {

constexpr const char* kIsString = "mValueType == StringVal";
constexpr const char* kIsObject = "mValueType == ObjectVal";
constexpr const char* kIsArray = "mValueType == ArrayVal";

}  // namespace

Value::Value(const char* value) {
  if (!value) return;
  mStringVal = value;
  mValueType = StringVal;
}

Value::Value(const Object& value) : mValueType(ObjectVal), mObjectVal(value) {}
Value::Value(Object&& value) : mValueType(ObjectVal), mObjectVal(std::move(value)) {}
Value::Value(const Array& value) : mValueType(ArrayVal), mArrayVal(value) {}
Value::Value(Array&& value) : mValueType(ArrayVal), mArrayVal(std::move(value)) {}

// `other` may be a part of this value: it is copied, or taken out, before anything is given up.
Value& Value::operator=(const Value& other) {
  take(Value(other));
  return *this;
}

Value& Value::operator=(Value&& other) noexcept {
  take(TakenFor(this, std::move(other)));
  return *this;
}

// REQUIRES: this value is not a part of `other`. `other` then has what this value had.
void Value::take(Value&& other) noexcept {
  mValueType = other.mValueType;
  mIntVal = other.mIntVal;
  mFloatVal = other.mFloatVal;
  mDoubleVal = other.mDoubleVal;
  mBoolVal = other.mBoolVal;
  mUnsignedIntVal = other.mUnsignedIntVal;
  mInt64Val = other.mInt64Val;
  mStringVal.swap(other.mStringVal);
  std::swap(mObjectVal, other.mObjectVal);
  std::swap(mArrayVal, other.mArrayVal);
}

std::string& Value::ToString() {
  if (mValueType != StringVal) AssertionFailed(__LINE__, "std::string& json::Value::ToString()", kIsString);
  return mStringVal;
}

const std::string& Value::ToString() const {
  if (mValueType != StringVal) {
    AssertionFailed(__LINE__, "const std::string& json::Value::ToString() const", kIsString);
  }
  return mStringVal;
}

Object& Value::ToObject() {
  if (mValueType != ObjectVal) AssertionFailed(394, "json::Object& json::Value::ToObject()", kIsObject);
  return mObjectVal.Get();
}

const Object& Value::ToObject() const {
  if (mValueType != ObjectVal) {
    AssertionFailed(394, "const json::Object& json::Value::ToObject() const", kIsObject);
  }
  return mObjectVal.Get();
}

Array& Value::ToArray() {
  if (mValueType != ArrayVal) AssertionFailed(395, "json::Array& json::Value::ToArray()", kIsArray);
  return mArrayVal.Get();
}

const Array& Value::ToArray() const {
  if (mValueType != ArrayVal) {
    AssertionFailed(395, "const json::Array& json::Value::ToArray() const", kIsArray);
  }
  return mArrayVal.Get();
}

Value& Value::operator[](std::size_t index) {
  if (mValueType != ArrayVal) AssertionFailed(238, "json::Value& json::Value::operator[](size_t)", kIsArray);
  return mArrayVal.Get()[index];
}

const Value& Value::operator[](std::size_t index) const {
  if (mValueType != ArrayVal) {
    AssertionFailed(244, "const json::Value& json::Value::operator[](size_t) const", kIsArray);
  }
  return mArrayVal.Get()[index];
}

Value& Value::operator[](const char* key) {
  if (mValueType != ObjectVal) {
    AssertionFailed(256, "json::Value& json::Value::operator[](const char*)", kIsObject);
  }
  return mObjectVal.Get()[key];
}

const Value& Value::operator[](const char* key) const {
  if (mValueType != ObjectVal) {
    AssertionFailed(262, "const json::Value& json::Value::operator[](const char*) const", kIsObject);
  }
  return mObjectVal.Get()[key];
}

Value& Value::operator[](const std::string& key) {
  if (mValueType != ObjectVal) {
    AssertionFailed(__LINE__, "json::Value& json::Value::operator[](const std::string&)", kIsObject);
  }
  return mObjectVal.Get()[key];
}

const Value& Value::operator[](const std::string& key) const {
  if (mValueType != ObjectVal) {
    AssertionFailed(__LINE__, "const json::Value& json::Value::operator[](const std::string&) const",
                    kIsObject);
  }
  return mObjectVal.Get()[key];
}

bool Value::HasKey(const std::string& key) const {
  if (mValueType != ObjectVal) {
    AssertionFailed(287, "bool json::Value::HasKey(const std::string&) const", kIsObject);
  }
  return mObjectVal.Get().HasKey(key);
}

int Value::HasKeys(const std::vector<std::string>& keys) const {
  if (mValueType != ObjectVal) {
    AssertionFailed(293, "int json::Value::HasKeys(const std::vector<std::string>&) const", kIsObject);
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!mObjectVal.Get().HasKey(keys[i])) return static_cast<int>(i);
  }
  return -1;
}

int Value::HasKeys(const char** keys, int count) const {
  if (mValueType != ObjectVal) {
    AssertionFailed(299, "int json::Value::HasKeys(const char**, int) const", kIsObject);
  }
  for (int i = 0; i < count; ++i) {
    if (!mObjectVal.Get().HasKey(keys[i])) return i;
  }
  return -1;
}

std::size_t Value::size() const {
  switch (mValueType) {
    case ObjectVal:
      return mObjectVal.Get().size();
    case ArrayVal:
      return mArrayVal.Get().size();
    default:
      return 1;
  }
}

}  // namespace json
