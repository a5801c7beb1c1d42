// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>
#include <ucontext.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "checker/Image.h"
#include "checker/VectorClock.h"

namespace model {

/// A thread of the execution. All of them run on the process's one thread, one at a time: the checker decides
/// which.
struct Fiber {
  enum class State { kReady, kBlocked, kWaiting, kEnded };
  static constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

  ucontext_t context{};
  ThreadLocals locals;
  VectorClock clock;
  State state = State::kReady;
  /// What it is blocked on, waits for, or has last given way for: for the report.
  const char* reason = "";
  const void* object = nullptr;
  /// It sleeps or yields: others go on before it does. The number of the operation at which it began; 0: it
  /// does not.
  std::uint32_t pausedAt = 0;
  /// It is in an operation, which is not in its past yet.
  bool hasBegun = false;
  bool isChange = false;  ///< the operation may change the object
  int yields = 0;         ///< since it last gave way
  /// Until when it waits for a notification at most.
  std::int64_t wakesAtNs = kNever;
  void* (*routine)(void*) = nullptr;
  void* argument = nullptr;
  void* result = nullptr;
  std::vector<const void*> calls;  ///< The functions that it is in, as the addresses that they return to.
  // Its last operation, if that was a load.
  std::uint64_t loadedAt = 0;
  std::size_t loadedStores = 0;
};

}  // namespace model
