#include "tessel/json_object.h"
#include "tessel/json_value.h"

namespace json {

bool Value::MergeValue(const Value& other) {
  // `other` may be a part of this value: what it replaces lives until the walk is over.
  std::vector<Value> replaced;
  return mergeInto(other, replaced);
}

bool Value::mergeInto(const Value& other, std::vector<Value>& replaced) {
  if (this == &other) return true;
  if (other.mValueType == NullVal || other.mValueType != mValueType) return false;
  if (mValueType != ObjectVal) {
    replaced.push_back(std::exchange(*this, Value(other)));
    return true;
  }

  bool merged = true;
  for (const auto& [key, theirs] : std::as_const(other.mObjectVal).Get()) {
    Value& ours = mObjectVal.Get()[key];
    if (ours.mValueType == ObjectVal) {
      merged &= ours.mergeInto(theirs, replaced);
    } else if (ours.mValueType == NullVal || ours.mValueType == theirs.mValueType) {
      replaced.push_back(std::exchange(ours, Value(theirs)));
    } else {
      merged = false;
    }
  }
  return merged;
}

}  // namespace json
