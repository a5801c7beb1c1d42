// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <utility>

#include "trace/CallContext.h"

namespace kalStore::internal {

/// What a component gave, as a callback. What that captured ends as the component's own code, whoever's
/// operation ends it.
template <class T>
class OfComponent {
 public:
  explicit OfComponent(T&& given) : m_given(std::move(given)) {}
  OfComponent(const OfComponent&) = delete;
  OfComponent& operator=(const OfComponent&) = delete;
  ~OfComponent() {
    const ComponentScope component;
    m_given.reset();
  }

  const T& operator*() const { return *m_given; }

 private:
  std::optional<T> m_given;
};

}  // namespace kalStore::internal
