// SPDX-License-Identifier: Apache-2.0
// Faults that programs with threads have, each in a few lines: the checker finds them, and nothing in the
// program that is right.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "checker/Explore.h"

namespace {

using model::Check;

model::Outcome Explored(const model::Scenario& scenario) {
  return model::Explore(scenario, {.preemptions = 3, .oddities = 1}, 0);
}

void ExpectFault(const model::Scenario& scenario, const char* failure) {
  const model::Outcome outcome = Explored(scenario);
  EXPECT_NE(outcome.failure.find(failure), std::string::npos) << outcome.failure;
  const std::string replayed = model::Replay(scenario, outcome.schedule);
  EXPECT_NE(replayed.find(failure), std::string::npos)
      << outcome.failure << " at " << outcome.schedule << "\n"
      << replayed;
}

void ExpectRight(const model::Scenario& scenario) {
  const model::Outcome outcome = Explored(scenario);
  EXPECT_EQ(outcome.failure, "") << outcome.schedule;
}

template <bool isInOrder>
void TwoLocks() {
  std::mutex a, b;
  std::thread other([&] {
    const std::lock_guard first(a);
    const std::lock_guard second(b);
  });
  {
    const std::lock_guard first(isInOrder ? a : b);
    const std::lock_guard second(isInOrder ? b : a);
  }
  other.join();
}

TEST(Checker, FindsADeadlock) {
  ExpectFault({"", &TwoLocks<false>}, "no thread can go on");
  ExpectRight({"", &TwoLocks<true>});
}

// The flag is set without the lock: between the waiter's look and its wait.
template <bool isLocked>
void WakeUp() {
  std::mutex mutex;
  std::condition_variable changed;
  std::atomic<bool> isDone{false};
  std::thread other([&] {
    std::unique_lock lock(mutex, std::defer_lock);
    if (isLocked) lock.lock();
    isDone.store(true);
    changed.notify_one();
  });
  {
    std::unique_lock lock(mutex);
    while (!isDone.load()) changed.wait(lock);
  }
  other.join();
}

TEST(Checker, FindsALostWakeUp) {
  ExpectFault({"", &WakeUp<false>}, "waits for a notification");
  ExpectRight({"", &WakeUp<true>});
}

template <bool asksAgain>
void Woken() {
  std::mutex mutex;
  std::condition_variable changed;
  bool isDone = false;
  std::thread other([&] {
    const std::lock_guard lock(mutex);
    isDone = true;
    changed.notify_one();
  });
  {
    std::unique_lock lock(mutex);
    if (asksAgain) {
      while (!isDone) changed.wait(lock);
    } else if (!isDone) {
      changed.wait(lock);
    }
    Check(isDone, "woken too early");
  }
  other.join();
}

TEST(Checker, WakesAThreadForNoReason) {
  ExpectFault({"", &Woken<false>}, "woken too early");
  ExpectRight({"", &Woken<true>});
}

// The C++ library waits for a variable itself where it has the size of an int, else for a count of its own.
template <class Value, std::memory_order load, bool isNotified>
void Message() {
  std::atomic<Value> isSent{0};
  int message = 0;
  std::thread other([&] {
    message = 1;
    isSent.store(1, std::memory_order_release);
    if (isNotified) isSent.notify_one();
  });
  isSent.wait(0, load);
  Check(message == 1, "woken too early");
  other.join();
}

TEST(Checker, WaitsForAnAtomicVariable) {
  ExpectRight({"", &Message<int, std::memory_order_acquire, true>});
  ExpectRight({"", &Message<bool, std::memory_order_acquire, true>});
  ExpectFault({"", &Message<int, std::memory_order_acquire, false>}, "waits for a notification");
  ExpectFault({"", &Message<bool, std::memory_order_acquire, false>}, "waits for a notification");
  ExpectFault({"", &Message<int, std::memory_order_relaxed, true>}, "a race");
}

template <bool all>
void Waiters() {
  std::atomic<int> isSent{0};
  std::thread first([&] { isSent.wait(0); });
  std::thread second([&] { isSent.wait(0); });
  isSent.store(1);
  if (all) {
    isSent.notify_all();
  } else {
    isSent.notify_one();
  }
  first.join();
  second.join();
}

TEST(Checker, NotifiesSomeWhoWaitForAnAtomicVariable) {
  ExpectRight({"", &Waiters<true>});
  ExpectFault({"", &Waiters<false>}, "waits for a notification");
}

template <bool asksAgain>
void WokenByTheSystem() {
  std::atomic<int> isDone{0};
  std::thread other([&] {
    isDone.store(1);
    syscall(SYS_futex, &isDone, FUTEX_WAKE_PRIVATE, 1);
  });
  do {
    if (syscall(SYS_futex, &isDone, FUTEX_WAIT_PRIVATE, 0, nullptr) != 0) Check(errno == EAGAIN, "the value");
  } while (asksAgain && isDone.load() == 0);
  Check(isDone.load() == 1, "woken too early");
  other.join();
}

TEST(Checker, WakesAThreadThatWaitsForAnAtomicVariableForNoReason) {
  ExpectFault({"", &WokenByTheSystem<false>}, "woken too early");
  ExpectRight({"", &WokenByTheSystem<true>});
}

// A stack whose pop takes a node for the one that it has read, as it has its address.
struct Node {
  int value;
  Node* next;
};

Node* Pop(std::atomic<Node*>& top) {
  Node* found = top.load();
  while (found != nullptr) {
    Node* const next = std::atomic_ref(found->next).load();
    if (top.compare_exchange_strong(found, next)) break;
  }
  return found;
}

void Push(std::atomic<Node*>& top, Node* node) {
  std::atomic_ref(node->next).store(top.load());
  Node* expected = top.load();
  do std::atomic_ref(node->next).store(expected);
  while (!top.compare_exchange_strong(expected, node));
}

void AddressComesBack() {
  static Node nodes[3] = {{0, nullptr}, {1, nullptr}, {2, nullptr}};
  std::atomic<Node*> top{nullptr};
  for (Node& node : nodes) Push(top, &node);
  Node* taken = nullptr;
  std::thread other([&] { taken = Pop(top); });
  Node* const first = Pop(top);
  Node* const second = Pop(top);
  if (first != nullptr) Push(top, first);
  other.join();
  for (Node* left = Pop(top); left != nullptr; left = Pop(top))
    Check(left != second && left != taken, "taken twice");
}

TEST(Checker, FindsWhatAnAddressThatComesBackBreaks) {
  ExpectFault({"", &AddressComesBack}, "taken twice");
}

template <bool isReleased>
void Counted() {
  struct Shared {
    std::atomic<int> references{2};
    int value = 0;
  };
  auto* const shared = new Shared;
  const auto release = [shared] {
    shared->value += 0;
    const auto order = isReleased ? std::memory_order_acq_rel : std::memory_order_relaxed;
    if (shared->references.fetch_sub(1, order) == 1) delete shared;
  };
  std::mutex mutex;
  std::thread other([&] {
    {
      const std::lock_guard lock(mutex);
      shared->value = 1;
    }
    if (shared->references.fetch_sub(1, isReleased ? std::memory_order_acq_rel : std::memory_order_relaxed) ==
        1)
      delete shared;
  });
  {
    const std::lock_guard lock(mutex);
    shared->value = 2;
  }
  if (shared->references.fetch_sub(1, isReleased ? std::memory_order_acq_rel : std::memory_order_relaxed) ==
      1)
    delete shared;
  other.join();
  (void)release;
}

TEST(Checker, FindsAnEndBesideAUse) {
  ExpectFault({"", &Counted<false>}, "a race");
  ExpectRight({"", &Counted<true>});
}

void Late() {
  auto value = std::make_shared<std::atomic<int>>(1);
  std::atomic<int>* const used = value.get();
  std::thread other([used] { used->fetch_add(1); });
  value.reset();
  other.join();
}

void LateOnStack() {
  std::atomic<std::atomic<int>*> published{nullptr};
  std::thread other([&] {
    std::atomic<int> count{0};
    published.store(&count);
    published.store(nullptr);
  });
  if (std::atomic<int>* const count = published.load()) count->fetch_add(1);
  other.join();
}

TEST(Checker, FindsUsesAfterTheEnd) {
  ExpectFault({"", &Late}, "memory that was freed");
  ExpectFault({"", &LateOnStack}, "the stack of a function that has returned");
}

template <bool isLocked>
void Containers() {
  std::map<std::string, std::string> map;
  std::mutex mutex;
  const auto insert = [&](const char* key) {
    std::unique_lock lock(mutex, std::defer_lock);
    if (isLocked) lock.lock();
    map[key] = "a value that does not fit into the string itself";
  };
  std::thread other([&] { insert("b"); });
  insert("a");
  other.join();
  Check(map.size() == 2, "lost");
}

TEST(Checker, SeesInsideContainers) {
  ExpectFault({"", &Containers<false>}, "a race");
  ExpectRight({"", &Containers<true>});
}

thread_local int t_own = 1;

void OwnOfEachThread() {
  std::mutex mutex;
  const auto check = [&] {
    for (int i = 1; i < 4; ++i) {
      Check(t_own == i, "another thread's");
      ++t_own;
      const std::lock_guard lock(mutex);
    }
  };
  std::thread other(check);
  check();
  other.join();
}

void Exceptions() {
  std::mutex mutex;
  const auto check = [&](const char* what) {
    try {
      const std::lock_guard lock(mutex);
      throw std::runtime_error(what);
    } catch (const std::exception& error) {
      {
        const std::lock_guard lock(mutex);
      }
      Check(error.what() == std::string(what) && std::uncaught_exceptions() == 0, "another thread's");
      try {
        throw;
      } catch (const std::runtime_error& again) {
        Check(&again == &error, "another exception");
      }
    }
  };
  std::thread other([&] { check("other"); });
  check("first");
  other.join();
}

TEST(Checker, ThreadsHaveTheirOwnVariablesAndExceptions) {
  ExpectRight({"", &OwnOfEachThread});
  ExpectRight({"", &Exceptions});
}

int g_runs = 0;

void Fresh() {
  static const std::string made = "a static object that allocates its memory";
  Check(++g_runs == 1 && made.size() == 41, "a variable has its value from the last execution");
}

TEST(Checker, EveryExecutionBeginsAlike) {
  ExpectRight({"", &Fresh});
}

void StaticOfTwo() {
  const auto get = [] {
    static const auto made = std::make_unique<int>(7);
    return *made;
  };
  std::thread other([&] { Check(get() == 7, "not made"); });
  Check(get() == 7, "not made");
  other.join();
}

TEST(Checker, StaticObjectsAreMadeOnce) {
  ExpectRight({"", &StaticOfTwo});
}

void Polls() {
  std::atomic<bool> isDone{false};
  std::thread other([&] { isDone.store(true); });
  timespec begin{}, end{};
  clock_gettime(CLOCK_MONOTONIC, &begin);
  while (!isDone.load()) {
    const timespec millisecond{0, 1000000};
    nanosleep(&millisecond, nullptr);
  }
  clock_gettime(CLOCK_MONOTONIC, &end);
  Check(end.tv_nsec - begin.tv_nsec < 50'000'000, "much time passed while a thread could go on");
  other.join();
}

void PollsForever() {
  const std::atomic<bool> isDone{false};
  while (!isDone.load()) sched_yield();
}

TEST(Checker, TimePassesOnlyWhileAllWait) {
  ExpectRight({"", &Polls});
  ExpectFault({"", &PollsForever}, "does not come to an end");
}

void Crashes() {
  std::unique_ptr<int> nothing;
  volatile int* const at = nothing.get();
  *at = 1;
}

TEST(Checker, FindsACrash) {
  ExpectFault({"", &Crashes}, "a crash");
}

}  // namespace
