// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

// The least work behind the boundary of a shared library that is built like the shipped ones.

/// A flag: the least that a disabled trace line can cost.
__attribute__((visibility("default"))) int ReadBoundaryFlag();

/// One word: the least that a setter of an interface can cost.
class BoundaryWord {
 public:
  virtual void Set(std::uint32_t value) = 0;

 protected:
  ~BoundaryWord() = default;
};
__attribute__((visibility("default"))) BoundaryWord& TheBoundaryWord();
