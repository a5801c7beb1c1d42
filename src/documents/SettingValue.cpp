// SPDX-License-Identifier: Apache-2.0
#include "documents/SettingValue.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "tessel/TypedValue.h"

namespace kalStore::internal {
namespace {

template <class T>
ValueFault FaultOfNumber(const SettingDeclaration& setting, const ConfigData& value) {
  const std::optional<T> number = ReadAs<T>(value);
  if (!number) return ValueFault::kWrongType;
  const std::optional<T> minimum = ReadAs<T>(setting.minimum), maximum = ReadAs<T>(setting.maximum);
  // Not-a-number is within no range.
  if ((minimum && !(*number >= *minimum)) || (maximum && !(*number <= *maximum))) {
    return ValueFault::kOutOfRange;
  }
  const bool isAllowed =
      setting.values.empty() || std::ranges::any_of(setting.values, [&](const std::string& allowed) {
        return ReadAs<T>(ConfigData(allowed)) == number;
      });
  return isAllowed ? ValueFault::kNone : ValueFault::kNotAllowed;
}

template <class T>
std::string WholeNumber() {
  using Limits = std::numeric_limits<T>;
  return "a whole number from " + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max());
}

}  // namespace

ValueFault FaultOf(const SettingDeclaration& setting, const ConfigData& value) {
  switch (setting.type) {
    case SettingType::kBool:
      return ReadAs<bool>(value) ? ValueFault::kNone : ValueFault::kWrongType;
    case SettingType::kInt:
      return FaultOfNumber<int>(setting, value);
    case SettingType::kUInt:
      return FaultOfNumber<unsigned int>(setting, value);
    case SettingType::kInt64:
    case SettingType::kDuration:
      return FaultOfNumber<std::int64_t>(setting, value);
    case SettingType::kDouble:
      return FaultOfNumber<double>(setting, value);
    case SettingType::kString:
      if (setting.values.empty()) return ValueFault::kNone;
      [[fallthrough]];
    case SettingType::kEnum:
      break;
  }
  const bool isAllowed = std::ranges::find(setting.values, value.ToString()) != setting.values.end();
  return isAllowed ? ValueFault::kNone : ValueFault::kNotAllowed;
}

bool HasRange(SettingType type) {
  return type != SettingType::kBool && type != SettingType::kString && type != SettingType::kEnum;
}

bool IsLess(SettingType type, const ConfigData& left, const ConfigData& right) {
  if (type == SettingType::kDouble) return left.ToDouble() < right.ToDouble();
  return ReadAs<std::int64_t>(left) < ReadAs<std::int64_t>(right);
}

std::string ExpectedType(SettingType type) {
  switch (type) {
    case SettingType::kBool:
      return "true or false";
    case SettingType::kInt:
      return WholeNumber<int>();
    case SettingType::kUInt:
      return WholeNumber<unsigned int>();
    case SettingType::kInt64:
    case SettingType::kDuration:
      return WholeNumber<std::int64_t>();
    case SettingType::kDouble:
      return "a number within the range of a double";
    case SettingType::kString:
    case SettingType::kEnum:
      break;
  }
  return "a string";
}

std::string ExpectedRange(const SettingDeclaration& setting) {
  const std::string& minimum = setting.minimum.ToString();
  const std::string& maximum = setting.maximum.ToString();
  if (!setting.maximum.IsValid()) return minimum + " or more";
  return setting.minimum.IsValid() ? "from " + minimum + " to " + maximum : maximum + " or less";
}

std::string ExpectedValues(const SettingDeclaration& setting) {
  std::string list;
  for (const std::string& value : setting.values) {
    if (!list.empty()) list += ", ";
    list += '"' + value + '"';
  }
  return list;
}

}  // namespace kalStore::internal
