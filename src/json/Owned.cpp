// SPDX-License-Identifier: Apache-2.0
#include "tessel/json_owned.h"

#include "tessel/json_array.h"
#include "tessel/json_object.h"

namespace json {

template <class T>
T* Owned<T>::create() {
  return new T;
}

template <class T>
T* Owned<T>::clone(const T& value) {
  return new T(value);
}

template <class T>
T* Owned<T>::take(T&& value) {
  return new T(std::move(value));
}

template <class T>
void Owned<T>::destroy(T* held) noexcept {
  delete held;
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
