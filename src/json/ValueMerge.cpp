// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "tessel/json_object.h"
#include "tessel/json_value.h"

namespace json {

bool Value::MergeValue(const Value& other) {
  if (this == &other) return true;
  if (other.mValueType == NullVal || other.mValueType != mValueType) return false;
  Value theirs(other);  // Either value may be a part of the other one.
  if (mValueType == ObjectVal) return mergeMembers(std::move(theirs.mObjectVal.Get()));
  take(std::move(theirs));
  return true;
}

// REQUIRES: an object that has no part in common with `theirs`.
bool Value::mergeMembers(Object&& theirs) {
  bool merged = true;
  for (auto& [key, their] : theirs) {
    Value& ours = mObjectVal.Get()[key];
    if (ours.mValueType == ObjectVal && their.mValueType == ObjectVal) {
      merged &= ours.mergeMembers(std::move(their.mObjectVal.Get()));
    } else if (ours.mValueType == NullVal || ours.mValueType == their.mValueType) {
      ours.take(std::move(their));
    } else {
      merged = false;
    }
  }
  return merged;
}

}  // namespace json
