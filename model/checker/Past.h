// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>

#include "checker/VectorClock.h"

namespace model {

/// The past of each thread of an execution, as a number: its operations, with what they found, and those of
/// other threads that they depend on. An operation depends on the earlier ones on the same object, but that
/// two which change nothing do not depend on each other.
class Past {
 public:
  void BeginExecution() {
    m_threads = {};
    m_objects.clear();
  }
  /// A thread did something with an object. `decision`: which of its options, if it had any.
  void Do(int thread, const void* object, bool isChange, std::uint64_t decision) {
    Object& used = m_objects[object];
    std::uint64_t& past = m_threads[static_cast<std::size_t>(thread)];
    past = Mix(Mix(past, used.changed), decision);
    if (isChange) {
      past = Mix(past, used.looks);
      used = {past, 0};
    } else {
      used.looks += past;  // In any order.
    }
  }
  /// A thread was started by another.
  void Start(int thread, int by) {
    m_threads[static_cast<std::size_t>(thread)] = Mix(Of(by), 1 + static_cast<std::uint64_t>(thread));
  }
  /// A thread found something that is of no object.
  void See(int thread, std::uint64_t value) {
    std::uint64_t& past = m_threads[static_cast<std::size_t>(thread)];
    past = Mix(past, value);
  }
  std::uint64_t Of(int thread) const { return m_threads[static_cast<std::size_t>(thread)]; }

  static std::uint64_t Mix(std::uint64_t first, std::uint64_t second) {
    // Each bit of either changes half of the result's.
    std::uint64_t mixed = first * 0x9E3779B97F4A7C15U + second + 0x632BE59BD9B4E019U;
    mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93U;
    mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93U;
    return mixed ^ mixed >> 32;
  }

 private:
  struct Object {
    std::uint64_t changed = 0;
    std::uint64_t looks = 0;  // Since then.
  };

  std::array<std::uint64_t, kMostThreads> m_threads{};
  std::unordered_map<const void*, Object> m_objects;
};

}  // namespace model
