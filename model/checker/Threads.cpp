// SPDX-License-Identifier: Apache-2.0
// The system's functions for threads, locks and time: those of an execution are the checker's. The program's
// definitions come before the C library's, for the C++ library as well.
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "checker/Checker.h"

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

// A thread's id is that of its number; 0 is none.
pthread_t IdOf(int thread) {
  return static_cast<pthread_t>(thread) + 1;
}

int NumberOf(pthread_t id) {
  return static_cast<int>(id) - 1;
}

bool IsRecursive(const pthread_mutex_t& mutex) {
  return mutex.__data.__kind == PTHREAD_MUTEX_RECURSIVE;
}

}  // namespace

#define MODEL_OPERATION(checker) \
  const model::Operation operation(*(checker), __builtin_return_address(0), __builtin_frame_address(0))

// NOLINTBEGIN: the system's names.
extern "C" {

int pthread_create(pthread_t* id, const pthread_attr_t*, void* (*routine)(void*), void* argument) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return EAGAIN;
  MODEL_OPERATION(checker);
  if (checker->IsThreadRefused()) return EAGAIN;
  *id = IdOf(checker->Start(routine, argument));
  return 0;
}

int pthread_join(pthread_t id, void** result) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return EINVAL;
  MODEL_OPERATION(checker);
  void* const joined = checker->Join(NumberOf(id));
  if (result != nullptr) *result = joined;
  return 0;
}

int pthread_detach(pthread_t) noexcept {
  return 0;
}

pthread_t pthread_self() noexcept {
  const model::Checker* const checker = model::ActiveChecker();
  return checker == nullptr ? 1 : IdOf(checker->Current());
}

int pthread_setname_np(pthread_t, const char*) noexcept {
  return 0;
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  std::memset(mutex, 0, sizeof *mutex);
  if (attributes != nullptr) pthread_mutexattr_gettype(attributes, &mutex->__data.__kind);
  return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*) noexcept {
  return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return 0;
  MODEL_OPERATION(checker);
  if (checker->Lock(mutex, IsRecursive(*mutex))) return 0;
  if (mutex->__data.__kind == PTHREAD_MUTEX_ERRORCHECK) return EDEADLK;
  checker->Fail("a thread locks a mutex that it has");
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return 0;
  MODEL_OPERATION(checker);
  return checker->TryLock(mutex, IsRecursive(*mutex)) ? 0 : EBUSY;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return 0;
  MODEL_OPERATION(checker);
  if (checker->Unlock(mutex)) return 0;
  if (mutex->__data.__kind == PTHREAD_MUTEX_ERRORCHECK) return EPERM;
  checker->Fail("a thread unlocks a mutex that it does not have");
}

int pthread_cond_destroy(pthread_cond_t*) noexcept {
  return 0;
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return EINVAL;
  MODEL_OPERATION(checker);
  checker->Wait(condition, mutex);
  return 0;
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t,
                           const timespec* end) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return EINVAL;
  MODEL_OPERATION(checker);
  return checker->WaitUntil(condition, mutex, end->tv_sec * kNsPerSecond + end->tv_nsec) ? 0 : ETIMEDOUT;
}

int pthread_cond_signal(pthread_cond_t* condition) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return 0;
  MODEL_OPERATION(checker);
  checker->Notify(condition, 1);
  return 0;
}

int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return 0;
  MODEL_OPERATION(checker);
  checker->Notify(condition, model::kMostThreads);
  return 0;
}

int sched_yield() noexcept {
  if (model::Checker* const checker = model::ActiveChecker()) {
    MODEL_OPERATION(checker);
    checker->Yield();
  }
  return 0;
}

int nanosleep(const timespec* time, timespec* left) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return static_cast<int>(syscall(SYS_nanosleep, time, left));
  MODEL_OPERATION(checker);
  checker->Pause("the end of a sleep");
  return 0;
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  const std::int64_t now = checker->NowNs();
  time->tv_sec = now / kNsPerSecond;
  time->tv_nsec = now % kNsPerSecond;
  return 0;
}

// A function's static object. The compiler's code has loaded the guard's first byte before, with acquire.

int __cxa_guard_acquire(std::uint8_t* guard) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) return *guard == 0 ? 1 : 0;
  MODEL_OPERATION(checker);
  if (!checker->Lock(guard, false)) checker->Fail("a static object's constructor needs the object");
  if (*guard == 0) return 1;
  checker->Unlock(guard);
  return 0;
}

void __cxa_guard_release(std::uint8_t* guard) {
  model::Checker* const checker = model::ActiveChecker();
  if (checker == nullptr) {
    *guard = 1;
    return;
  }
  MODEL_OPERATION(checker);
  checker->Store({guard, 1}, 1, __ATOMIC_RELEASE);
  checker->Unlock(guard);
}

void __cxa_guard_abort(std::uint8_t* guard) {
  if (model::Checker* const checker = model::ActiveChecker()) {
    MODEL_OPERATION(checker);
    checker->Unlock(guard);
  }
}

// An execution's static objects end with it, without a destructor.
int __real___cxa_atexit(void (*function)(void*), void* argument, void* library);
int __wrap___cxa_atexit(void (*function)(void*), void* argument, void* library) {
  return model::ActiveChecker() != nullptr ? 0 : __real___cxa_atexit(function, argument, library);
}

// In place of the processor's counter.
std::uint64_t ModelTicks() {
  model::Checker* const checker = model::ActiveChecker();
  return checker == nullptr ? 0 : static_cast<std::uint64_t>(checker->NowNs());
}

}  // extern "C"
// NOLINTEND
