// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>

#include "checker/VectorClock.h"

namespace model {

/// Where the heap and the stacks of executions are.
class Region {
 public:
  static constexpr std::size_t kPartSize = std::size_t{32} << 20;  // Of the heap, for each thread.
  static constexpr std::size_t kHeapSize = kMostThreads * kPartSize;
  static constexpr std::size_t kStackSize = std::size_t{256} << 10;
  static constexpr std::size_t kSize = kHeapSize + kMostThreads * kStackSize;

  static std::byte* Begin();
  static std::byte* PartOf(int thread) { return Begin() + static_cast<std::size_t>(thread) * kPartSize; }
  static std::byte* Stacks() { return Begin() + kHeapSize; }
  static std::byte* StackOf(int thread) { return Stacks() + static_cast<std::size_t>(thread) * kStackSize; }
  static bool IsOfHeap(const void* memory) { return memory >= Begin() && memory < Stacks(); }

  static bool IsOfStacks(const void* memory) { return memory >= Stacks() && memory < Begin() + kSize; }
  static int OwnerOfStack(const void* memory) {
    return static_cast<int>(static_cast<std::size_t>(static_cast<const std::byte*>(memory) - Stacks()) /
                            kStackSize);
  }

  /// For static objects: they go back with the program's variables. Null once the first checker was made.
  static void* AllocateAtLoad(std::size_t size, std::size_t alignment);
  /// What was allocated so. Ends it.
  static std::span<std::byte> EndLoad();

  /// Memory of the system, taken as it is used.
  static void* Reserve(std::size_t size);
};

/// The next address of the alignment.
inline std::byte* Align(std::byte* address, std::size_t alignment) {
  const auto number = reinterpret_cast<std::uintptr_t>(address);
  return address + ((number + alignment - 1) / alignment * alignment - number);
}

}  // namespace model
