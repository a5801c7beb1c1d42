// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

#include "support/AllocationCount.h"
#include "util/util.h"

/// All trace lines are composed, and go nowhere, while it lives.
class QuietTrace {
 public:
  QuietTrace() {
    set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
    set_external_trace_mask(2);
  }
  ~QuietTrace() {
    set_external_trace_mask(0);
    set_util_trace_sink(nullptr, nullptr);
  }
  QuietTrace(const QuietTrace&) = delete;
  QuietTrace& operator=(const QuietTrace&) = delete;
};

/// Runs `operation` on what `setup` returns, first with no allocation of the calling thread failing, then
/// with its first, second, third... until none is left to fail. `check` is given, each time, whether the
/// operation returned; otherwise std::bad_alloc left it. Whatever else leaves it fails the test, and so does
/// anything that is still allocated when the state is gone. Returns how many allocations failed.
template <class Setup, class Operation, class Check>
std::size_t FailEachAllocation(Setup setup, Operation operation, Check check) {
  {
    auto state = setup();
    {
      const QuietTrace quiet;
      operation(state);
    }
    check(state, true);
  }
  for (std::size_t n = 1;; ++n) {
    const testing::ScopedTrace place(__FILE__, __LINE__, testing::Message() << "failed allocation " << n);
    const long liveBefore = LiveAllocations();
    bool isFailed = false;
    {
      auto state = setup();
      bool isDone = true;
      {
        const QuietTrace quiet;
        const FailAllocation nth(n);
        try {
          operation(state);
        } catch (const std::bad_alloc&) {
          isDone = false;
        }
        isFailed = nth.Fired();
      }
      check(state, isDone);
    }
    EXPECT_EQ(LiveAllocations(), liveBefore) << "leaked";
    if (!isFailed || testing::Test::HasFailure()) return n - 1;
  }
}
