// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_value.h"

namespace json {

namespace {

constexpr double kTolerance = 1e-9;

std::int64_t IntegerOf(const Value& value) {
  switch (value.GetType()) {
    case IntVal:
      return value.ToInt();
    case UnsignedIntVal:
      return value.ToUnsignedInt();
    default:
      return value.ToInt64();
  }
}

template <class Real>
Real RealOf(const Value& value) {
  switch (value.GetType()) {
    case FloatVal:
      return static_cast<Real>(value.ToFloat());
    case DoubleVal:
      return static_cast<Real>(value.ToDouble());
    default:
      return static_cast<Real>(IntegerOf(value));
  }
}

bool EqualNumbers(const Value& left, const Value& right) {
  const auto either = [&](ValueType type) { return left.GetType() == type || right.GetType() == type; };
  if (either(DoubleVal)) return std::fabs(RealOf<double>(left) - RealOf<double>(right)) < kTolerance;
  if (either(FloatVal)) return std::fabs(RealOf<float>(left) - RealOf<float>(right)) < kTolerance;
  return IntegerOf(left) == IntegerOf(right);
}

}  // namespace

bool Value::isNumber() const {
  switch (mValueType) {
    case IntVal:
    case Int64Val:
    case FloatVal:
    case DoubleVal:
    case UnsignedIntVal:
      return true;
    default:
      return false;
  }
}

bool operator==(const Value& left, const Value& right) {
  if (left.isNumber()) return right.isNumber() && EqualNumbers(left, right);
  if (left.mValueType != right.mValueType && !right.isNumber()) return false;
  // A number on the right is read as the left's kind, of which it holds nothing.
  switch (left.mValueType) {
    case StringVal:
      return left.mStringVal == right.mStringVal;
    case ObjectVal:
      return left.mObjectVal.Get() == right.mObjectVal.Get();
    case ArrayVal:
      return left.mArrayVal.Get() == right.mArrayVal.Get();
    case BoolVal:
      return left.mBoolVal == right.mBoolVal;
    default:
      return true;
  }
}

}  // namespace json
