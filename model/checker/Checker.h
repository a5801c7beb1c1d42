// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "checker/Atomics.h"
#include "checker/Choices.h"
#include "checker/Explore.h"
#include "checker/Fiber.h"
#include "checker/Image.h"
#include "checker/Memory.h"
#include "checker/Past.h"
#include "checker/Refusals.h"
#include "checker/Sharing.h"

namespace model {

/// What a thread did, for the report of a replayed execution.
struct Step {
  std::uint32_t operation;
  int thread;
  const char* what;
  const void* object;
  std::uint64_t value;
  const void* place;
  std::vector<const void*> calls;
};

/// Runs executions of a scenario, one at a time. The compiler's and the system's functions of Hooks.cpp and
/// Threads.cpp bring here whatever the threads do.
class Checker {
 public:
  explicit Checker(const Scenario& scenario);
  Checker(const Checker&) = delete;
  Checker& operator=(const Checker&) = delete;

  Choices& Choice() { return m_choices; }
  const Sharing& Shared() const { return m_sharing; }
  void StopLearning() { m_sharing.StopLearning(); }

  /// Runs it once. Returns what is wrong, or nothing.
  std::string Run();
  /// Of a replayed execution.
  const std::vector<Step>& Steps() const { return m_steps; }
  std::uint32_t Operations() const { return m_choices.Operation(); }

  /// Ends the execution: something is wrong.
  [[noreturn]] void Fail(const std::string& what);

  // What the threads do, each called by the one that runs.

  int Current() const { return m_current; }
  Fiber& Self() { return *m_fibers[static_cast<std::size_t>(m_current)]; }
  void EnterFunction(const void* caller) { Self().calls.push_back(caller); }
  void LeaveFunction() {
    if (!Self().calls.empty()) Self().calls.pop_back();
  }
  /// Where the thread is in an operation.
  void SetPlace(const void* place, const void* frame) {
    m_place = place;
    m_memory.SetFrame(m_current, frame);
  }

  void Read(const void* from, std::size_t size);
  void Write(const void* to, std::size_t size);
  /// Null when it is refused.
  void* Allocate(std::size_t size, std::size_t alignment) {
    if (m_scenario.reusesMemory) changeHeap();
    return isRefused(m_refusals.allocations) ? nullptr : m_memory.Allocate(size, alignment, m_current);
  }
  void Free(void* memory);

  std::uint64_t Load(Atomics::Object object, int order);
  void Store(Atomics::Object object, std::uint64_t value, int order);
  template <class Change>
  std::uint64_t Modify(Atomics::Object object, int order, Change change) {
    begin("modifies", object.address, object.size, true);
    const std::uint64_t old = m_atomics.Modify(object, order, doer(), change);
    end(old);
    return old;
  }
  bool CompareExchange(Atomics::Object object, std::uint64_t& expected, std::uint64_t desired, int order,
                       int failureOrder, bool isWeak);

  /// Whether the thread has the lock now; false when it would wait for itself.
  bool Lock(const void* mutex, bool isRecursive);
  bool TryLock(const void* mutex, bool isRecursive);
  /// False when the thread does not have it.
  bool Unlock(const void* mutex);
  void Wait(const void* condition, const void* mutex);
  /// The same, until a time at most; false when that has come.
  bool WaitUntil(const void* condition, const void* mutex, std::int64_t endNs);
  /// Waits for a notification of the word, unless that has another value: then false. The value is the latest
  /// one, as the system looks at it where it makes the thread wait.
  bool WaitWhile(const std::uint32_t* word, std::uint32_t value);
  /// So many of those that wait for a condition or a word, at most. Returns how many.
  int Notify(const void* object, int count);

  /// What the system refuses from now on, to whichever thread.
  void Refuse(const Refusals& refusals) { m_refusals = refusals; }
  bool IsThreadRefused() { return isRefused(m_refusals.threads); }
  /// The number of a new thread.
  int Start(void* (*routine)(void*), void* argument);
  void* Join(int thread);
  /// Others go on first. When all wait, the time passes.
  void Pause(const char* reason);
  void Yield();

  /// Passes while all threads wait, and in no other way.
  std::int64_t NowNs() {
    m_past.See(m_current, static_cast<std::uint64_t>(m_nowNs));
    return m_nowNs;
  }
  void Pass(std::int64_t ns) { m_nowNs += ns; }

 private:
  struct Mutex {
    int owner = -1;
    int depth = 0;
    VectorClock released;
  };

  static void runFiber();
  Atomics::Doer doer() { return {m_current, Self().clock}; }
  Memory::Accessor accessor() { return {m_current, Self().clock}; }
  void begin(const char* what, const void* object, std::size_t size, bool isChange, bool isOffered = true);
  void end(std::uint64_t value);
  void offerPreemption();
  std::uint64_t state() const;
  bool isRefused(Refused& requests) {
    const bool isRefused = requests.Take();
    if (isRefused) m_past.See(m_current, 1);
    return isRefused;
  }
  // Where memory is used again, a block depends on those that were freed.
  void changeHeap() { m_past.Do(m_current, &m_memory, true, 0); }
  void check(Memory::Finding finding, const char* what, const void* memory, std::size_t size);
  [[noreturn]] void failAll();
  void block(const char* reason, const void* object, Fiber::State state);
  void waitFor(const void* object);
  void wake(const void* object, Fiber::State state);
  int nextThread();
  int earliestToWake() const;
  void switchTo(int thread);
  void acquire(Mutex& mutex);
  Sharing::Place place() const;

  const Scenario m_scenario;
  const Image m_image;
  Choices m_choices;
  Memory m_memory;
  Atomics m_atomics{m_choices};
  Sharing m_sharing;
  Past m_past;
  std::vector<std::unique_ptr<Fiber>> m_pool;
  std::vector<Fiber*> m_fibers;  // Of this execution.
  ucontext_t m_main{};
  int m_current = 0;
  std::unordered_map<const void*, Mutex> m_mutexes;
  std::unordered_map<const void*, std::deque<int>> m_waiters;  // By object, in the order of arrival.
  Refusals m_refusals;
  std::int64_t m_nowNs = 0;
  std::uint32_t m_changedAt = 0;  // The last operation that changed something.
  std::uint32_t m_begin = 1;
  const void* m_place = nullptr;
  std::string m_failure;
  std::vector<Step> m_steps;
  std::unordered_map<const void*, const void*>
      m_lastPlaces[kMostThreads];  // Of a replay: who accessed what, where.
};

/// The checker, while an execution runs and the thread is not in an operation already; else null.
Checker* ActiveChecker();
/// The checker, while an execution runs.
Checker* RunningChecker();

/// An operation of a thread, from the function that brings it here: what that uses itself is not the
/// scenario's.
class Operation {
 public:
  Operation(Checker& checker, const void* place, const void* frame);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
};

/// What a scenario does meanwhile is not of its execution: it is no step, and what it allocates outlives it.
class Aside {
 public:
  Aside();
  ~Aside();
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
};

}  // namespace model
