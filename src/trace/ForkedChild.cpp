// SPDX-License-Identifier: Apache-2.0
#include "trace/ForkedChild.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace kalStore::internal {
namespace {

// Relaxed: in the child there is one thread. Two threads that fork at once
// store the same.
constinit std::atomic<bool> g_hasThreads{false};
constinit std::atomic<bool> g_isForkedChild{false};

bool HasNeverHadThreads() {
#if __has_include(<sys/single_threaded.h>)
  return __libc_single_threaded != 0;
#else
  return false;
#endif
}

// Whether a thread in the system's list is over. One that was joined may be listed for a while after that:
// it is marked as exiting before pthread_join() returns.
bool IsOver(const char* thread) {
  char text[512] = {};
  std::snprintf(text, sizeof text, "/proc/self/task/%s/stat", thread);
  const int file = open(text, O_RDONLY | O_CLOEXEC);
  if (file == -1) return errno == ENOENT;
  const ssize_t size = read(file, text, sizeof text - 1);
  const bool isGone = size == -1 && errno == ESRCH;
  close(file);
  return size > 0 ? IsExiting(text) : isGone;
}

// Whether other threads run at the moment. The C library knows only whether there have been any.
bool HasThreads() {
  constexpr const char* kThreads = "/proc/self/task";
  constexpr nlink_t kLinksOfOneThread = 3;
  // Again when threads left the list between the two looks: it may then have been read in part.
  for (int tries = 0; tries < 100; ++tries) {
    struct stat threads{};
    if (stat(kThreads, &threads) == -1 || threads.st_nlink < kLinksOfOneThread) return true;
    nlink_t others = threads.st_nlink - kLinksOfOneThread;
    if (others == 0) return false;
    DIR* const list = opendir(kThreads);
    if (list == nullptr) return true;
    bool isRunning = false;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the list is this thread's own.
    while (const dirent* const entry = isRunning ? nullptr : readdir(list)) {
      if (*entry->d_name == '.' || std::strtol(entry->d_name, nullptr, 10) == gettid()) continue;
      isRunning = !IsOver(entry->d_name);
      --others;
    }
    closedir(list);
    if (isRunning) return true;
    if (others == 0) return false;
  }
  return true;
}

void BeforeFork() {
  g_hasThreads.store(!HasNeverHadThreads() && HasThreads(), std::memory_order_relaxed);
}

void AfterForkInChild() {
  if (g_hasThreads.load(std::memory_order_relaxed)) g_isForkedChild.store(true, std::memory_order_relaxed);
}

}  // namespace

bool IsExiting(const char* thread) {
  constexpr unsigned long kExiting = 4;
  const char* at = std::strrchr(thread, ')');  // The name may contain anything.
  for (int field = 0; field < 7 && at != nullptr; ++field) at = std::strchr(at + 1, ' ');
  return at != nullptr && (std::strtoul(at, nullptr, 10) & kExiting) != 0;
}

bool IsForkedChild() {
  return g_isForkedChild.load(std::memory_order_relaxed);
}

void NoticeForks() {
  pthread_atfork(&BeforeFork, nullptr, &AfterForkInChild);
}

}  // namespace kalStore::internal
