// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>
#include <utility>

#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_value.h"

namespace kalStore::internal {

/// Whether a value, object or array contains the value, object or array at that address. A container that is
/// moved into a part of itself would own itself: nothing could reach or free it.
/// Looks at every part: time in proportion to what would be moved, and none for strings and numbers.
bool IsPartOf(const void* part, const json::Value& whole);
bool IsPartOf(const void* part, const json::Object& whole);
bool IsPartOf(const void* part, const json::Array& whole);

/// What a move hands over: the value itself, or a copy when `target` is a part of it.
template <class Container>
Container TakenFor(const void* target, Container&& source) {
  static_assert(!std::is_reference_v<Container>, "only what is moved is taken");
  return IsPartOf(target, source) ? Container(std::as_const(source))
                                  : Container(std::forward<Container>(source));
}

}  // namespace kalStore::internal
