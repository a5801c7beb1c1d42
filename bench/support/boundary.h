#pragma once

#include <cstdint>

// What lies behind the boundary of a shared library built like the shipped ones, and does the least there.

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
