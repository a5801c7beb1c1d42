// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace model {

/// The program's own variables, initialised and not. Those of the checker are among them: what it has to know
/// from one execution to the next is on the heap.
std::span<std::byte> ProgramData();

/// The calling thread's thread_local variables of the program, and what the C++ library has of its
/// exceptions.
class ThreadLocals {
 public:
  /// As at the begin of a thread.
  ThreadLocals();

  void Save();
  void Restore() const;
  /// Whether an object is one of them. Every thread of an execution has them at the same place.
  static bool Contains(const void* object);

 private:
  std::vector<std::byte> m_variables;
  std::byte m_exceptions[2 * sizeof(void*)] = {};
};

/// Brings the program's variables, and what static objects have allocated, back to what they were.
class Image {
 public:
  Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  void Restore() const;

 private:
  const std::span<std::byte> m_loaded;
  const std::vector<std::byte> m_data;
  const std::vector<std::byte> m_allocated;
};

}  // namespace model
