// SPDX-License-Identifier: Apache-2.0
#include "tessel/json_owned.h"

#include <new>
#include <utility>

#include "json/NodeBlocks.h"
#include "tessel/json_array.h"
#include "tessel/json_node_allocator.h"
#include "tessel/json_object.h"

namespace json {

namespace {

// A T in a node's memory, beside the members that it will have.
template <class T, class... From>
T* MakeNode(From&&... from) {
  void* const memory = detail::AllocateNode(sizeof(T));
  try {
    return new (memory) T(std::forward<From>(from)...);
  } catch (...) {
    detail::FreeNode(memory, sizeof(T));
    throw;
  }
}

}  // namespace

template <class T>
T* Owned<T>::create() {
  return MakeNode<T>();
}

template <class T>
T* Owned<T>::clone(const T& value) {
  return MakeNode<T>(value);
}

template <class T>
T* Owned<T>::take(T&& value) {
  return MakeNode<T>(std::move(value));
}

template <class T>
void Owned<T>::destroy(T* held) noexcept {
  const kalStore::internal::NodeBlocks::ReleasedTogether nodes;
  held->~T();
  detail::FreeNode(held, sizeof(T));
}

// Never destroyed: values are read until the very end of the process.
template <class T>
const T& Owned<T>::sharedEmpty() {
  static const T& empty = *new T;
  return empty;
}

template class Owned<Object>;
template class Owned<Array>;

}  // namespace json
