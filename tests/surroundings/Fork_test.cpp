// SPDX-License-Identifier: Apache-2.0
// Processes that are forked while other threads are at work.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iterator>
#include <memory>
#include <thread>

#include "libutil/TestEvents.h"
#include "support/CallingSink.h"
#include "support/ThreadState.h"
#include "tessel/CKalTessel.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "trace/ForkedChild.h"

namespace kalStore {
namespace {

constexpr int kEnded = 17;

bool g_isInChild = false;

// Constructed before the registries, and so ended after them: the child has come through its exit. A leak
// checker, which would come next, does not know the stacks of the threads that are in the parent alone.
__attribute__((init_priority(101))) const struct AfterTheExit {
  ~AfterTheExit() {
    if (g_isInChild) _exit(kEnded);
  }
} g_afterTheExit;

/// Forks. The child calls `work` and exits by exit(), with the ends of all that has static storage; the
/// status that it exits with.
template <class Work>
int ExitOfChild(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(600);  // A child that waits for ever fails.
    g_isInChild = true;
    work();
    std::exit(EXIT_FAILURE);  // NOLINT(concurrency-mt-unsafe): the child has one thread.
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Calls `hold` on a thread of its own, with a trace sink that keeps the thread in the first line that
/// contains `part`, and forks meanwhile. The child calls `work` and exits.
template <class Hold, class Work>
int ExitOfChildDuring(const char* part, Hold hold, Work work) {
  std::promise<void> isHeld;
  std::promise<void> go;
  const CallingSink sink(part, [&, isFirst = true]() mutable {
    if (!std::exchange(isFirst, false)) return;
    isHeld.set_value();
    go.get_future().wait();
  });
  std::thread holder(hold);
  isHeld.get_future().wait();
  const int status = ExitOfChild(work);
  go.set_value();
  holder.join();
  return status;
}

void UseAStore() {
  IKalConfig* store = nullptr;
  CreateKalConfig(9, &store);
  CleanUpKalConfig(9);
  ReleaseKalConfig(store);
}

TEST(Fork, LeavesAChildThatCanExitWhileTheStoresRegistryIsHeld) {
  const KalConfigHelper facade(7);
  EXPECT_EQ(ExitOfChildDuring("KalConfig::KalConfig", &UseAStore, [] {}), kEnded);
  CleanUpKalConfig(7);
}

TEST(Fork, LeavesAChildThatCanExitWhileTheRegistryOfStatisticsIsHeld) {
  const auto use = [] {
    void* entity = nullptr;
    createTesselEntity(KAL_TESSEL_AUDIO, 9, &entity);
    releaseTesselEntity(KAL_TESSEL_AUDIO, 9, entity);
  };
  EXPECT_EQ(ExitOfChildDuring("createOrGetTesselEntity", use, [] {}), kEnded);
}

TEST(Fork, LeavesAChildInWhichAFacadeCanEnd) {
  auto facade = std::make_unique<KalConfigHelper>(7);
  facade->SubscribeConfig("name", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO);
  EXPECT_EQ(ExitOfChildDuring("KalConfig::KalConfig", &UseAStore, [&] { facade.reset(); }), kEnded);
  EXPECT_EQ(facade->SetKalConfig("name", 1, KAL_CONFIG_GROUP_AUDIO), kResultOk);
  CleanUpKalConfig(7);
}

TEST(Fork, LeavesAChildInWhichAThreadOfTheParentCanEnd) {
  auto thread = std::make_unique<ACmThread>();
  ASSERT_EQ(thread->Start(), 0);
  EventCounts counts;
  std::promise<void> isFired;
  std::promise<void> go;
  const auto work = [&] {
    isFired.set_value();
    go.get_future().wait();
  };
  ICmEventQueue* const queue = thread->GetEventQueue();
  queue->PostEvent(new CountedEvent(counts, work), ICmEventQueue::kDefaultPriority, 0);
  isFired.get_future().wait();
  std::thread stopping([&] { thread->Stop(); });  // Waits with the lock of the thread's control.
  while (thread->GetEventQueue() != nullptr) std::this_thread::yield();
  EXPECT_EQ(ExitOfChild([&] {
              if (thread->Stop() != 0) std::abort();
              thread.reset();
            }),
            kEnded);
  go.set_value();
  stopping.join();
  EXPECT_EQ(thread->GetThreadId(), 0U);
}

TEST(Fork, LeavesAChildInWhichAThreadOfTheParentCanEndThatWaitsForEvents) {
  auto thread = std::make_unique<ACmThread>();
  ASSERT_EQ(thread->Start(), 0);
  EventCounts counts;
  pid_t id = 0;
  thread->GetEventQueue()->SendEvent(new CountedEvent(counts, [&] { id = gettid(); }), 0);
  while (StateOf(id) != 'S') std::this_thread::yield();
  EXPECT_EQ(ExitOfChild([&] { thread.reset(); }), kEnded);
  EXPECT_EQ(thread->Stop(), 0);
}

TEST(Fork, LeavesAChildInWhichTheThreadThatForkedCanEnd) {
  auto thread = std::make_unique<ACmThread>();
  ASSERT_EQ(thread->Start(), 0);
  EventCounts counts;
  int status = -1;
  const auto forks = [&] {
    status = ExitOfChild([&] {
      if (thread->Stop() != EDEADLK) std::abort();
      thread.reset();
    });
  };
  thread->GetEventQueue()->SendEvent(new CountedEvent(counts, forks), 0);
  EXPECT_EQ(status, kEnded);
  EXPECT_EQ(thread->Stop(), 0);
}

// A process without threads, as one that becomes a daemon: the child of its child is as it was.
TEST(ForkDeathTest, OfAProcessWithoutThreadsLeavesAChildThatMayDoEverything) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto beDaemon = [] {
    static KalConfigHelper facade(7);
    const int status = ExitOfChild([] {
      static int notified = 0;
      facade.SubscribeConfig("name", [](const KalConfigEvent&) { ++notified; }, KAL_CONFIG_GROUP_AUDIO);
      static ACmThread thread;
      EventCounts counts;
      facade.SetKalConfig("name", 1, KAL_CONFIG_GROUP_AUDIO);
      const bool works = notified == 1 && thread.Start() == 0 &&
                         thread.GetEventQueue()->SendEvent(new CountedEvent(counts), 0) == 0 &&
                         thread.Stop() == 0 && counts.fired == 1;
      if (!works) std::abort();
    });
    _exit(status);
  };
  EXPECT_EXIT(beDaemon(), testing::ExitedWithCode(kEnded), "");
}

// The thread sanitizer has a thread of its own, which nobody joins.
#if defined(__SANITIZE_THREAD__)
constexpr bool kHasOwnThread = true;
#elif defined(__has_feature)
constexpr bool kHasOwnThread = __has_feature(thread_sanitizer);
#else
constexpr bool kHasOwnThread = false;
#endif

TEST(ForkDeathTest, OfAProcessWhoseThreadsHaveBeenJoinedLeavesAChildThatMayDoEverything) {
  if (kHasOwnThread) GTEST_SKIP() << "The thread sanitizer has a thread of its own.";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto forkAfterJoin = [] {
    static KalConfigHelper facade(7);
    for (int i = 0; i < 100; ++i) {
      std::thread([] {}).join();
      const int status = ExitOfChild([] {
        static int notified = 0;
        KalConfigHelper(7).SubscribeConfig(
            "name", [](const KalConfigEvent&) { ++notified; }, KAL_CONFIG_GROUP_AUDIO);
        facade.SetKalConfig("name", 1, KAL_CONFIG_GROUP_AUDIO);
        ConfigData value;
        GetKalConfigValueEx(KAL_CONFIG_GROUP_AUDIO, "name", value, 8);
        CleanUpKalConfig(8);
        if (notified != 0 || GetKalConfigSizeForUT() != 1) std::abort();
      });
      if (status != kEnded) _exit(EXIT_FAILURE);
    }
    _exit(kEnded);
  };
  EXPECT_EXIT(forkAfterJoin(), testing::ExitedWithCode(kEnded), "");
}

auto OpenFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/thread-self/fd"), {});
}

// The first thread of a process stays in the system's list of threads until all have ended.
TEST(ForkDeathTest, OfAProcessWhoseFirstThreadIsOverLeavesAChildThatMayDoEverything) {
  if (kHasOwnThread) GTEST_SKIP() << "The thread sanitizer has a thread of its own.";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto forkAfterFirst = [] {
    std::thread([first = gettid()] {
      while (StateOf(first) != 'Z') std::this_thread::yield();
      const auto files = OpenFiles();
      const int status = ExitOfChild([] {
        if (internal::IsForkedChild()) std::abort();
      });
      _exit(OpenFiles() == files ? status : EXIT_FAILURE);
    }).detach();
    syscall(SYS_exit, 0);  // The thread alone.
  };
  EXPECT_EXIT(forkAfterFirst(), testing::ExitedWithCode(kEnded), "");
}

}  // namespace
}  // namespace kalStore
