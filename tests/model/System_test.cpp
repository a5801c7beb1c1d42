// SPDX-License-Identifier: Apache-2.0
// What the system does in an execution: it refuses memory and threads when it is asked to, its time passes
// while threads wait, and what is not freed is found.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <thread>

#include "checker/Checker.h"
#include "checker/Explore.h"

namespace {

using namespace std::chrono_literals;
using model::Check;

std::string FaultOf(void (*run)()) {
  return model::Explore({"", run}, {.preemptions = 2, .oddities = 1}, 0).failure;
}

// The compiler may leave out a new-expression.
bool HasMemory() {
  try {
    ::operator delete(::operator new(1));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

TEST(System, RefusesTheAllocationsThatItIsAskedTo) {
  const auto refuse = [] {
    model::RunningChecker()->Refuse({.allocations = {.first = 1, .count = 2}, .threads = {}});
    Check(HasMemory(), "the first one is not refused");
    Check(!HasMemory() && !HasMemory(), "two are");
    Check(HasMemory(), "later ones are not");
  };
  EXPECT_EQ(FaultOf(refuse), "");
}

TEST(System, RefusesAllocationsOnAnyThread) {
  const auto refuse = [] {
    bool hasMemory = true;
    pthread_t other{};
    model::RunningChecker()->Refuse({.allocations = {.first = 0, .count = 1000}, .threads = {}});
    pthread_create(
        &other, nullptr,
        [](void* result) -> void* {
          *static_cast<bool*>(result) = HasMemory();
          return nullptr;
        },
        &hasMemory);
    pthread_join(other, nullptr);
    Check(!hasMemory, "on the other thread as well");
    model::RunningChecker()->Refuse({});
    Check(HasMemory(), "until it is asked otherwise");
  };
  EXPECT_EQ(FaultOf(refuse), "");
}

TEST(System, RefusesThreads) {
  const auto refuse = [] {
    model::RunningChecker()->Refuse({.allocations = {}, .threads = {.first = 0, .count = 1}});
    const auto start = [] {
      pthread_t thread{};
      const int result = pthread_create(&thread, nullptr, [](void* self) { return self; }, nullptr);
      if (result == 0) pthread_join(thread, nullptr);
      return result;
    };
    Check(start() == EAGAIN, "the first one is refused");
    Check(start() == 0, "the second one is not");
  };
  EXPECT_EQ(FaultOf(refuse), "");
}

// The waiter has the time that it asked for, and the others theirs.
TEST(System, LetsTheTimeOfAWaitPass) {
  const auto wait = [] {
    std::mutex mutex;
    std::condition_variable never;
    const auto begin = std::chrono::steady_clock::now();
    std::unique_lock lock(mutex);
    while (never.wait_until(lock, begin + 250ms) == std::cv_status::no_timeout) {
    }
    Check(std::chrono::steady_clock::now() - begin >= 250ms, "the time has passed");
  };
  EXPECT_EQ(FaultOf(wait), "");
}

TEST(System, EndsAWaitWithATimeByANotification) {
  const auto notify = [] {
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
    std::thread other([&] {
      const std::lock_guard lock(mutex);
      isDone = true;
      changed.notify_one();
    });
    std::unique_lock lock(mutex);
    while (!isDone) changed.wait_until(lock, std::chrono::steady_clock::now() + 1h);
    lock.unlock();
    other.join();
  };
  EXPECT_EQ(FaultOf(notify), "");
}

// Two wait for each other's time: the earlier one goes on first.
TEST(System, WakesWaitersInTheOrderOfTheirTimes) {
  const auto wait = [] {
    const auto begin = std::chrono::steady_clock::now();
    std::mutex mutex;
    std::condition_variable never;
    bool isLate = false;
    const auto waitFor = [&](std::chrono::milliseconds time) {
      std::unique_lock lock(mutex);
      while (never.wait_until(lock, begin + time) == std::cv_status::no_timeout) {
      }
    };
    std::thread other([&] {
      waitFor(20ms);
      isLate = true;
    });
    std::this_thread::sleep_for(10ms);
    other.join();
    Check(isLate && std::chrono::steady_clock::now() - begin >= 20ms, "both had their time");
  };
  EXPECT_EQ(FaultOf(wait), "");
}

void* g_kept = nullptr;

TEST(System, FindsWhatNothingPointsAt) {
  const auto leak = [] {
    // More than variables of earlier tests may happen to point at.
    for (int i = 0; i < 100; ++i) {
      g_kept = ::operator new(1);
      Check(g_kept != nullptr, "it is pointed at so far");
    }
    g_kept = nullptr;
  };
  EXPECT_NE(FaultOf(leak).find("a leak: "), std::string::npos) << FaultOf(leak);
}

TEST(System, TakesNothingForALeakThatAVariablePointsAt) {
  const auto keep = [] {
    g_kept = ::operator new(sizeof(void*));
    *static_cast<void**>(g_kept) = ::operator new(1);
  };
  EXPECT_EQ(FaultOf(keep), "");
}

}  // namespace
