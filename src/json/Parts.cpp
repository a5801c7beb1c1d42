// SPDX-License-Identifier: Apache-2.0
#include "json/Parts.h"

#include <algorithm>

namespace kalStore::internal {

bool IsPartOf(const void* part, const json::Value& whole) {
  switch (whole.GetType()) {
    case json::ObjectVal:
      return &whole.ToObject() == part || IsPartOf(part, whole.ToObject());
    case json::ArrayVal:
      return &whole.ToArray() == part || IsPartOf(part, whole.ToArray());
    default:
      return false;
  }
}

bool IsPartOf(const void* part, const json::Object& whole) {
  return std::any_of(whole.begin(), whole.end(), [part](const auto& member) {
    return &member.second == part || IsPartOf(part, member.second);
  });
}

bool IsPartOf(const void* part, const json::Array& whole) {
  return std::any_of(whole.begin(), whole.end(), [part](const json::Value& element) {
    return &element == part || IsPartOf(part, element);
  });
}

}  // namespace kalStore::internal
