// SPDX-License-Identifier: Apache-2.0
#include "trace/ForkedChild.h"

#include <pthread.h>

#include <atomic>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace kalStore::internal {
namespace {

// Relaxed: in the child there is one thread. Two threads that fork at once
// store the same.
constinit std::atomic<bool> g_hasThreads{false};
constinit std::atomic<bool> g_isForkedChild{false};

void BeforeFork() {
#if __has_include(<sys/single_threaded.h>)
  g_hasThreads.store(__libc_single_threaded == 0, std::memory_order_relaxed);
#else
  g_hasThreads.store(true, std::memory_order_relaxed);
#endif
}

void AfterForkInChild() {
  if (g_hasThreads.load(std::memory_order_relaxed)) g_isForkedChild.store(true, std::memory_order_relaxed);
}

}  // namespace

bool IsForkedChild() {
  return g_isForkedChild.load(std::memory_order_relaxed);
}

void NoticeForks() {
  pthread_atfork(&BeforeFork, nullptr, &AfterForkInChild);
}

}  // namespace kalStore::internal
