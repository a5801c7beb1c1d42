// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "tessel/export.h"

namespace json::detail {

TESSEL_API void* AllocateNode(std::size_t size);
TESSEL_API void FreeNode(void* node, std::size_t size) noexcept;

/// Allocates the nodes of an Object's members, one at a time. All are equal: a node moves between objects.
template <class T>
class NodeAllocator {
 public:
  using value_type = T;

  NodeAllocator() noexcept = default;
  template <class U>
  NodeAllocator(const NodeAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) { return static_cast<T*>(AllocateNode(count * sizeof(T))); }
  void deallocate(T* node, std::size_t count) noexcept { FreeNode(node, count * sizeof(T)); }

  template <class U>
  bool operator==(const NodeAllocator<U>&) const noexcept {
    return true;
  }
};

}  // namespace json::detail
