// SPDX-License-Identifier: Apache-2.0
#include "tessel/jsonHelper.h"

#include <string_view>

namespace {

jsonHelper MemberOf(const json::Value& value, std::string_view key) {
  if (value.GetType() != json::ObjectVal) return {};
  const json::Object& object = value.ToObject();
  const auto found = object.find(key);
  if (found == object.end()) return {};
  return found->second;
}

}  // namespace

// NOLINTNEXTLINE(cert-oop54-cpp): there is nothing to assign but Value's part, which takes itself well.
jsonHelper& jsonHelper::operator=(const jsonHelper& other) {
  Value::operator=(other);
  return *this;
}

jsonHelper& jsonHelper::operator=(jsonHelper&& other) noexcept {
  Value::operator=(std::move(other));
  return *this;
}

jsonHelper jsonHelper::operator[](std::string key) const {
  return MemberOf(*this, key);
}

jsonHelper jsonHelper::operator[](const char* key) const {
  if (key == nullptr) return {};
  return MemberOf(*this, key);
}

int jsonHelper::ToInt(int def) const {
  return GetType() == json::IntVal ? Value::ToInt() : def;
}

unsigned int jsonHelper::ToUnsignedInt(unsigned int def) const {
  return GetType() == json::UnsignedIntVal ? Value::ToUnsignedInt() : def;
}

float jsonHelper::ToFloat(float def) const {
  return GetType() == json::FloatVal ? Value::ToFloat() : def;
}

double jsonHelper::ToDouble(double def) const {
  return GetType() == json::DoubleVal ? Value::ToDouble() : def;
}

bool jsonHelper::ToBool(bool def) const {
  return GetType() == json::BoolVal ? Value::ToBool() : def;
}

std::string jsonHelper::ToString(std::string def) const {
  if (GetType() == json::StringVal) return Value::ToString();
  return def;
}

json::Object jsonHelper::ToObject() const {
  return GetType() == json::ObjectVal ? Value::ToObject() : json::Object();
}

json::Array jsonHelper::ToArray() const {
  return GetType() == json::ArrayVal ? Value::ToArray() : json::Array();
}
