// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "tessel/export.h"

namespace json {

/// The part of a Value that most values do not have: one pointer, empty until it is first written to.
/// Copies are deep; moves leave the source empty. T may be incomplete where values are declared and moved.
template <class T>
class Owned {
 public:
  Owned() noexcept = default;
  explicit Owned(const T& value) : m_held(clone(value)) {}
  explicit Owned(T&& value) : m_held(take(std::move(value))) {}
  Owned(const Owned& other) : m_held(other.m_held ? clone(*other.m_held) : nullptr) {}
  Owned(Owned&& other) noexcept : m_held(std::exchange(other.m_held, nullptr)) {}
  Owned& operator=(Owned other) noexcept {
    std::swap(m_held, other.m_held);
    return *this;
  }
  ~Owned() {
    if (m_held) destroy(m_held);
  }

  /// What is held. Reading an empty one gives an empty T that all share; writing makes one.
  T& Get() { return m_held ? *m_held : *(m_held = create()); }
  const T& Get() const { return m_held ? *m_held : sharedEmpty(); }

 private:
  TESSEL_API static T* clone(const T& value);
  TESSEL_API static T* take(T&& value);
  TESSEL_API static T* create();
  TESSEL_API static void destroy(T* held) noexcept;
  TESSEL_API static const T& sharedEmpty();

  T* m_held = nullptr;
};

}  // namespace json
