// SPDX-License-Identifier: Apache-2.0
#include "store/WaitClock.h"

#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <cerrno>
#include <ctime>

#include "util/clock_policy.h"

namespace kalStore::internal {
namespace {

long NowMs() {
  return timer_policy::now() / 1000;
}

// No cancellation point: destructors wait, which a cancellation must not unwind.
void SleepOneMs() {
  int before = PTHREAD_CANCEL_ENABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
  timespec left{.tv_sec = 0, .tv_nsec = 1000000};
  while (nanosleep(&left, &left) == -1 && errno == EINTR) {
  }
  pthread_setcancelstate(before, nullptr);
}

void Yield() {
  sched_yield();
}

constexpr WaitClock kRealClock{&NowMs, &SleepOneMs, &Yield};
constinit std::atomic<const WaitClock*> g_clock{&kRealClock};

}  // namespace

const WaitClock& CurrentWaitClock() {
  // Pairs with SetWaitClock(): the clock is seen as it was when it was set.
  return *g_clock.load(std::memory_order_acquire);
}

long ElapsedMs(long startMs, long nowMs) {
  return nowMs - startMs + (nowMs < startMs ? timer_policy::max_time_value() / 1000 : 0);
}

void SetWaitClock(const WaitClock* clock) {
  g_clock.store(clock == nullptr ? &kRealClock : clock, std::memory_order_release);
}

}  // namespace kalStore::internal
