// SPDX-License-Identifier: Apache-2.0
#include "checker/Checker.h"

#include <sys/single_threaded.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "checker/Region.h"

namespace model {

namespace {

constexpr std::uint32_t kMostOperations = 100'000;
constexpr int kFreeYields = 16;
// How long a thread sleeps that others have changed something for meanwhile, and how long when nothing
// changes.
constexpr std::int64_t kShortSleepNs = 1'000'000;
constexpr std::int64_t kLongSleepNs = 100'000'000;
constexpr std::int64_t kBeginNs = 1'000'000'000;
constexpr std::int64_t kMostPassedNs = 1'000'000'000;

// Both go back to this between executions, with all variables of the program.
Checker* g_checker = nullptr;
bool g_isInside = true;

}  // namespace

Checker* ActiveChecker() {
  return g_isInside ? nullptr : g_checker;
}

Checker* RunningChecker() {
  return g_checker;
}

Operation::Operation(Checker& checker, const void* place, const void* frame) {
  g_isInside = true;
  checker.SetPlace(place, frame);
}

Operation::~Operation() {
  g_isInside = false;
}

Aside::Aside() {
  g_isInside = true;
}

Aside::~Aside() {
  g_isInside = false;
}

Checker::Checker(const Scenario& scenario) : m_scenario(scenario) {
  for (int i = 0; i < kMostThreads; ++i) m_pool.push_back(std::make_unique<Fiber>());
}

std::string Checker::Run() {
  m_image.Restore();
  // The C++ library counts its references plainly while the process has one thread.
  __libc_single_threaded = 0;
  if (m_begin > Epoch::kLatestTime / 2) {
    m_memory.ForgetTimes();
    m_begin = 1;
  }
  m_choices.BeginExecution();
  m_memory.BeginExecution(m_begin, m_scenario.reusesMemory);
  m_atomics.BeginExecution();
  m_sharing.BeginExecution();
  m_past.BeginExecution();
  m_fibers.clear();
  m_mutexes.clear();
  m_waiters.clear();
  m_refusals = {};
  m_nowNs = kBeginNs;
  m_changedAt = 0;
  m_failure.clear();
  m_steps.clear();
  for (auto& places : m_lastPlaces) places.clear();

  ThreadLocals main;
  main.Save();
  g_checker = this;
  m_current = 0;
  Start(
      [](void* self) -> void* {
        static_cast<const Checker*>(self)->m_scenario.run();
        return nullptr;
      },
      this);
  Self().locals.Restore();
  swapcontext(&m_main, &Self().context);
  g_isInside = true;
  g_checker = nullptr;
  if (m_failure.empty()) m_failure = m_memory.FindLeak();
  main.Restore();
  for (const Fiber* fiber : m_fibers) {
    for (int thread = 0; thread < kMostThreads; ++thread)
      m_begin = std::max(m_begin, fiber->clock.Of(thread));
  }
  ++m_begin;
  return m_failure;
}

void Checker::Fail(const std::string& what) {
  m_failure = what;
  setcontext(&m_main);
  std::abort();
}

void Checker::runFiber() {
  Checker& checker = *g_checker;
  g_isInside = false;
  Fiber& self = checker.Self();
  self.result = self.routine(self.argument);
  g_isInside = true;
  self.state = Fiber::State::kEnded;
  self.clock.Tick(checker.m_current);
  checker.m_past.Do(checker.m_current, &self, true, 0);
  checker.m_memory.EndStack(checker.m_current);
  checker.wake(&self, Fiber::State::kBlocked);
  // The last one to end is the scenario's own, if it waits for the others.
  for (const Fiber* fiber : checker.m_fibers) {
    if (fiber->state != Fiber::State::kEnded) {
      checker.switchTo(checker.nextThread());
      std::abort();
    }
  }
  setcontext(&checker.m_main);
}

int Checker::Start(void* (*routine)(void*), void* argument) {
  const auto number = static_cast<int>(m_fibers.size());
  if (number == kMostThreads) Fail("the scenario has too many threads");
  Fiber& fiber = *m_pool[static_cast<std::size_t>(number)];
  fiber.locals = ThreadLocals();
  fiber.clock = number == 0 ? VectorClock(m_begin) : Self().clock;
  fiber.clock.Set(Epoch(number, m_begin + 1));
  if (number != 0) {
    Self().clock.Tick(m_current);
    m_past.Do(m_current, &m_fibers, true, 0);
    m_past.Start(number, m_current);
  }
  fiber.hasBegun = false;
  fiber.state = Fiber::State::kReady;
  fiber.pausedAt = 0;
  fiber.yields = 0;
  fiber.wakesAtNs = Fiber::kNever;
  fiber.routine = routine;
  fiber.argument = argument;
  fiber.calls.clear();
  fiber.loadedAt = 0;
  getcontext(&fiber.context);
  fiber.context.uc_stack.ss_sp = Region::StackOf(number);
  fiber.context.uc_stack.ss_size = Region::kStackSize;
  fiber.context.uc_link = nullptr;
  makecontext(&fiber.context, &runFiber, 0);
  m_fibers.push_back(&fiber);
  return number;
}

void* Checker::Join(int thread) {
  begin("joins", m_fibers[static_cast<std::size_t>(thread)], 1, true, false);
  Fiber& joined = *m_fibers[static_cast<std::size_t>(thread)];
  while (joined.state != Fiber::State::kEnded) block("the end of a thread", &joined, Fiber::State::kBlocked);
  Self().clock.Join(joined.clock);
  end(static_cast<std::uint64_t>(thread));
  return joined.result;
}

// The function and those around it: a place of its own for each use of what the libraries share.
Sharing::Place Checker::place() const {
  constexpr std::size_t kCallers = 2;
  auto place = reinterpret_cast<std::uint64_t>(m_place);
  const std::vector<const void*>& calls = m_fibers[static_cast<std::size_t>(m_current)]->calls;
  for (std::size_t i = 0; i < kCallers && i < calls.size(); ++i) {
    place = place * 1099511628211U ^ reinterpret_cast<std::uint64_t>(calls[calls.size() - 1 - i]);
  }
  return place;
}

void Checker::begin(const char* what, const void* object, std::size_t size, bool isChange, bool isOffered) {
  m_choices.BeginOperation();
  if (m_choices.Operation() > kMostOperations) Fail("does not come to an end");
  if (m_choices.IsReplay()) {
    m_steps.push_back({m_choices.Operation(), m_current, what, object, 0, m_place, Self().calls});
  }
  Self().reason = what;
  Self().object = object;
  Self().hasBegun = true;
  Self().isChange = isChange;
  const void* const here = m_place;
  const bool isShared =
      m_sharing.Use(object, place(), m_current, isChange) || Memory::IsOnAnothersStack(object, m_current);
  if (isOffered && (isShared || m_choices.IsReplay())) offerPreemption();
  m_place = here;
  if (isChange) m_changedAt = m_choices.Operation();
  check(m_memory.Synchronize(object, size, accessor()), what, object, size);
}

void Checker::end(std::uint64_t value) {
  Self().loadedAt = 0;
  Self().hasBegun = false;
  m_past.Do(m_current, Self().object, Self().isChange, m_choices.TakeDecision());
  Self().clock.Tick(m_current);
  if (m_choices.IsReplay()) {
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
      if (step->thread != m_current) continue;
      step->value = value;
      break;
    }
  }
}

// All that the rest of the execution depends on, but for what the choices leave. A thread's past decides
// where it is in the program; the pasts of all, what is in every object, and in memory, as there is no race.
// Two executions in one state differ only in when operations were executed that do not depend on each other.
std::uint64_t Checker::state() const {
  std::uint64_t state = 0;
  const auto add = [&](auto part) { state = Past::Mix(state, static_cast<std::uint64_t>(part)); };
  add(m_current);
  add(m_nowNs);
  for (const Refused& requests : {m_refusals.allocations, m_refusals.threads}) {
    add(requests.first);
    add(requests.count);
    add(requests.number);
  }
  for (int thread = 0; thread < static_cast<int>(m_fibers.size()); ++thread) {
    const Fiber& fiber = *m_fibers[static_cast<std::size_t>(thread)];
    add(m_past.Of(thread));
    add(fiber.state);
    add(fiber.hasBegun);
    add(fiber.yields);
    add(fiber.wakesAtNs);
    add(fiber.pausedAt);
    add(m_changedAt >= fiber.pausedAt);
  }
  return state;
}

void Checker::offerPreemption() {
  if (m_choices.IsNew()) m_choices.BeAt(state());
  if (!m_choices.Affords(Choices::Cost::kPreemption)) return;
  Options threads{m_current};
  for (int thread = 0; thread < static_cast<int>(m_fibers.size()); ++thread) {
    const Fiber::State state = m_fibers[static_cast<std::size_t>(thread)]->state;
    const bool canWake = state == Fiber::State::kWaiting && m_choices.Affords(Choices::Cost::kOddity);
    if (thread != m_current && (state == Fiber::State::kReady || canWake)) threads.Add(thread);
  }
  const int chosen = m_choices.Choose(Choices::Kind::kPreemption, Choices::Cost::kPreemption, threads);
  if (chosen == m_current) return;
  const Fiber& fiber = *m_fibers[static_cast<std::size_t>(chosen)];
  if (fiber.state == Fiber::State::kWaiting) {
    m_choices.Spend(Choices::Cost::kOddity);
    // The time may pass while others could go on, too; not so often that bounded waits give up.
    if (fiber.wakesAtNs < kBeginNs + kMostPassedNs) m_nowNs = std::max(m_nowNs, fiber.wakesAtNs);
  }
  switchTo(chosen);
}

void Checker::block(const char* reason, const void* object, Fiber::State state) {
  Self().state = state;
  Self().yields = 0;
  Self().reason = reason;
  Self().object = object;
  switchTo(nextThread());
}

void Checker::wake(const void* object, Fiber::State state) {
  for (Fiber* fiber : m_fibers) {
    if (fiber->state == state && fiber->object == object) fiber->state = Fiber::State::kReady;
  }
}

// Which thread goes on when this one does not: any that is ready; of those that only pause, the one that has
// for the longest time.
int Checker::nextThread() {
  Options ready;
  int longest = -1;
  for (int thread = 0; thread < static_cast<int>(m_fibers.size()); ++thread) {
    const Fiber& fiber = *m_fibers[static_cast<std::size_t>(thread)];
    if (fiber.state != Fiber::State::kReady) continue;
    if (fiber.pausedAt == 0) {
      ready.Add(thread);
    } else if (longest < 0 || fiber.pausedAt < m_fibers[static_cast<std::size_t>(longest)]->pausedAt) {
      longest = thread;
    }
  }
  if (ready.Size() > 0) return m_choices.Choose(Choices::Kind::kNext, Choices::Cost::kFree, ready);
  const int earliest = earliestToWake();
  if (longest < 0 && earliest < 0) failAll();
  std::int64_t awakeNs = Fiber::kNever;
  if (longest >= 0) {
    awakeNs = m_nowNs + (m_changedAt >= m_fibers[static_cast<std::size_t>(longest)]->pausedAt ? kShortSleepNs
                                                                                              : kLongSleepNs);
  }
  const std::int64_t notifiedNs =
      earliest >= 0 ? m_fibers[static_cast<std::size_t>(earliest)]->wakesAtNs : Fiber::kNever;
  m_nowNs = std::max(m_nowNs, std::min(awakeNs, notifiedNs));
  return awakeNs < notifiedNs ? longest : earliest;
}

// Of those that wait until a time at most, the one whose time comes first; -1: there is none.
int Checker::earliestToWake() const {
  int earliest = -1;
  std::int64_t atNs = Fiber::kNever;
  for (int thread = 0; thread < static_cast<int>(m_fibers.size()); ++thread) {
    const Fiber& fiber = *m_fibers[static_cast<std::size_t>(thread)];
    if (fiber.state != Fiber::State::kWaiting || fiber.wakesAtNs >= atNs) continue;
    earliest = thread;
    atNs = fiber.wakesAtNs;
  }
  return earliest;
}

void Checker::failAll() {
  std::string what = "no thread can go on:";
  for (std::size_t i = 0; i < m_fibers.size(); ++i) {
    if (m_fibers[i]->state == Fiber::State::kEnded) continue;
    what += " thread " + std::to_string(i) + " waits for " + m_fibers[i]->reason + ";";
  }
  what.back() = '.';
  Fail(what);
}

void Checker::switchTo(int thread) {
  Fiber& next = *m_fibers[static_cast<std::size_t>(thread)];
  next.state = Fiber::State::kReady;
  next.pausedAt = 0;
  if (thread == m_current) return;
  Fiber& self = Self();
  self.locals.Save();
  m_current = thread;
  next.locals.Restore();
  swapcontext(&self.context, &next.context);
}

void Checker::Pause(const char* reason) {
  begin(reason, &Self(), 1, false, false);
  Self().pausedAt = m_choices.Operation();
  Self().yields = 0;
  switchTo(nextThread());
  end(0);
}

// A thread yields a few times before it sleeps: the checker preempts it elsewhere. One that yields again and
// again waits for others.
void Checker::Yield() {
  if (++Self().yields > kFreeYields) Pause("the others, yielding");
}

void Checker::check(Memory::Finding finding, const char* what, const void* memory, std::size_t size) {
  if (m_choices.IsReplay()) m_lastPlaces[m_current][memory] = m_place;
  if (finding.fault == Memory::Fault::kNone) return;
  char text[200];
  const char* const faults[] = {"", "a race", "memory that was freed",
                                "the stack of a function that has returned"};
  std::snprintf(text, sizeof text, "%s: thread %d %s %zu bytes at %p",
                faults[static_cast<int>(finding.fault)], m_current, what, size, memory);
  std::string found = text;
  if (finding.fault == Memory::Fault::kRace) {
    found += std::string(" beside a ") + (finding.isOtherWrite ? "write" : "read") + " by thread " +
             std::to_string(finding.other.Thread());
  }
  if (m_choices.IsReplay()) {
    m_steps.push_back({m_choices.Operation(), m_current, what, memory, size, m_place, Self().calls});
    const auto& places = m_lastPlaces[finding.other.Thread()];
    const auto other = places.find(memory);
    if (finding.fault == Memory::Fault::kRace && other != places.end()) {
      m_steps.push_back({m_choices.Operation(),
                         finding.other.Thread(),
                         "was the other, here",
                         memory,
                         size,
                         other->second,
                         {}});
    }
  }
  Fail(found);
}

void Checker::Read(const void* from, std::size_t size) {
  check(m_memory.Read(from, size, accessor()), "reads", from, size);
}

void Checker::Write(const void* to, std::size_t size) {
  check(m_memory.Write(to, size, accessor()), "writes", to, size);
  m_atomics.Forget(to, size);
  m_mutexes.erase(to);
}

void Checker::Free(void* memory) {
  if (m_scenario.reusesMemory) changeHeap();
  check(m_memory.Free(memory, accessor()), "frees", memory, 0);
}

std::uint64_t Checker::Load(Atomics::Object object, int order) {
  // A load that is repeated, with nothing new to see, is no other moment than its first time.
  const bool isRepeated =
      Self().loadedAt == place() && Self().loadedStores == m_atomics.StoresOf(object, doer());
  begin("loads", object.address, object.size, false, !isRepeated);
  const std::uint64_t at = place();
  const std::uint64_t value = m_atomics.Load(object, order, doer());
  end(value);
  Self().loadedAt = at;
  Self().loadedStores = m_atomics.StoresOf(object, doer());
  return value;
}

void Checker::Store(Atomics::Object object, std::uint64_t value, int order) {
  begin("stores", object.address, object.size, true);
  m_atomics.Store(object, value, order, doer());
  end(value);
}

bool Checker::CompareExchange(Atomics::Object object, std::uint64_t& expected, std::uint64_t desired,
                              int order, int failureOrder, bool isWeak) {
  begin("exchanges", object.address, object.size, true);
  const bool isDone =
      m_atomics.CompareExchange(object, expected, desired, order, failureOrder, isWeak, doer());
  end(isDone ? desired : expected);
  return isDone;
}

void Checker::acquire(Mutex& mutex) {
  mutex.owner = m_current;
  mutex.depth = 1;
  Self().clock.Join(mutex.released);
}

bool Checker::Lock(const void* mutex, bool isRecursive) {
  if (const Mutex& held = m_mutexes[mutex]; held.owner == m_current && !isRecursive) return false;
  begin("locks", mutex, 1, true, m_mutexes[mutex].owner != m_current);
  // By address each time: others may add to the map meanwhile.
  while (m_mutexes[mutex].owner >= 0 && m_mutexes[mutex].owner != m_current) {
    block("a lock", mutex, Fiber::State::kBlocked);
  }
  if (Mutex& locked = m_mutexes[mutex]; locked.owner == m_current) {
    ++locked.depth;
  } else {
    acquire(locked);
  }
  end(1);
  return true;
}

bool Checker::TryLock(const void* mutex, bool isRecursive) {
  begin("tries to lock", mutex, 1, true);
  Mutex& tried = m_mutexes[mutex];
  const bool isFree = tried.owner < 0 || (tried.owner == m_current && isRecursive);
  if (isFree && tried.owner == m_current) {
    ++tried.depth;
  } else if (isFree) {
    acquire(tried);
  }
  end(isFree ? 1 : 0);
  return isFree;
}

bool Checker::Unlock(const void* mutex) {
  Mutex& locked = m_mutexes[mutex];
  if (locked.owner != m_current) return false;
  begin("unlocks", mutex, 1, true, false);
  if (--locked.depth == 0) {
    locked.owner = -1;
    locked.released = Self().clock;
    wake(mutex, Fiber::State::kBlocked);
  }
  end(0);
  return true;
}

void Checker::Wait(const void* condition, const void* mutex) {
  begin("waits", condition, 1, true);
  const int depth = m_mutexes[mutex].depth;
  m_mutexes[mutex].depth = 1;
  end(0);
  if (!Unlock(mutex)) Fail("waits without the lock");
  waitFor(condition);
  Lock(mutex, false);
  m_mutexes[mutex].depth = depth;
}

bool Checker::WaitUntil(const void* condition, const void* mutex, std::int64_t endNs) {
  Self().wakesAtNs = endNs;
  Wait(condition, mutex);
  Self().wakesAtNs = Fiber::kNever;
  return NowNs() < endNs;
}

bool Checker::WaitWhile(const std::uint32_t* word, std::uint32_t value) {
  begin("waits", word, sizeof *word, true);
  const bool isSame = *word == value;
  end(isSame ? 1 : 0);
  if (isSame) waitFor(word);
  return isSame;
}

void Checker::waitFor(const void* object) {
  m_waiters[object].push_back(m_current);
  block("a notification", object, Fiber::State::kWaiting);
  std::erase(m_waiters[object], m_current);
}

int Checker::Notify(const void* object, int count) {
  begin("notifies", object, 1, true);
  int woken = 0;
  for (; woken < count; ++woken) {
    Options waiters;
    for (const int waiter : m_waiters[object]) {
      if (m_fibers[static_cast<std::size_t>(waiter)]->state == Fiber::State::kWaiting) waiters.Add(waiter);
    }
    if (waiters.Size() == 0) break;
    // Which ones, where not all of them.
    const int chosen = waiters.Size() <= static_cast<std::size_t>(count - woken)
                           ? waiters[0]
                           : m_choices.Choose(Choices::Kind::kWaiter, Choices::Cost::kFree, waiters);
    m_fibers[static_cast<std::size_t>(chosen)]->state = Fiber::State::kReady;
  }
  m_past.See(m_current, static_cast<std::uint64_t>(woken));  // How a waiter was woken is in no past.
  end(static_cast<std::uint64_t>(woken));
  return woken;
}

}  // namespace model
