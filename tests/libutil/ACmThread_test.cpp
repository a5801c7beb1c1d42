// SPDX-License-Identifier: Apache-2.0
#include "util/ACmThread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "libutil/TestEvents.h"
#include "support/AllocationCount.h"
#include "support/ThreadState.h"

namespace {

std::string NameOf(ACmThread& thread) {
  EventCounts counts;
  char name[64] = "";
  thread.GetEventQueue()->SendEvent(
      new CountedEvent(counts, [&] { pthread_getname_np(pthread_self(), name, sizeof name); }), 0);
  return name;
}

/// Runs a function when its thread ends.
struct AtThreadEnd {
  ~AtThreadEnd() {
    if (function) function();
  }
  std::function<void()> function;
};
thread_local AtThreadEnd t_atThreadEnd;

}  // namespace

TEST(ThreadSelfId, IsNotZeroAndStaysTheSame) {
  EXPECT_NE(GetThreadSelfId(), 0u);
  EXPECT_EQ(GetThreadSelfId(), GetThreadSelfId());
}

TEST(ThreadSelfId, DiffersBetweenRunningThreads) {
  const unsigned long other = std::async(std::launch::async, [] { return GetThreadSelfId(); }).get();
  EXPECT_NE(other, 0u);
  EXPECT_NE(other, GetThreadSelfId());
}

TEST(Thread, HasNoIdAndNoQueueBeforeItStarts) {
  ACmThread thread;
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.GetEventQueue(), nullptr);
}

TEST(Thread, RunsWhenStartReturns) {
  ACmThread thread;
  EXPECT_EQ(thread.Start(), 0);
  EXPECT_NE(thread.GetThreadId(), 0u);
  ICmEventQueue* queue = thread.GetEventQueue();
  ASSERT_NE(queue, nullptr);
  EventCounts counts;
  unsigned long self = 0;
  EXPECT_EQ(queue->SendEvent(new CountedEvent(counts, [&] { self = GetThreadSelfId(); }), 0), 0);
  EXPECT_EQ(self, thread.GetThreadId());
  EXPECT_NE(self, GetThreadSelfId());
}

TEST(Thread, HasNoIdAndNoQueueOnceStopped) {
  ACmThread thread;
  thread.Start();
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.GetEventQueue(), nullptr);
}

TEST(Thread, SleepsWhileItHasNothingToDo) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  EventCounts counts;
  pid_t id = 0;
  thread.GetEventQueue()->SendEvent(new CountedEvent(counts, [&] { id = gettid(); }), 0);
  while (StateOf(id) != 'S') std::this_thread::yield();
}

TEST(Thread, RefusesToStartTwice) {
  ACmThread thread;
  EXPECT_EQ(thread.Start(), 0);
  const unsigned long id = thread.GetThreadId();
  EXPECT_EQ(thread.Start(), EBUSY);
  EXPECT_EQ(thread.GetThreadId(), id);
}

TEST(Thread, DoesNotStartWithoutMemory) {
  ACmThread thread;
  {
    const FailAllocation first(1);
    EXPECT_EQ(thread.Start(), ENOMEM);
  }
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.Start(), 0);
}

TEST(Thread, RefusesToStartFromItself) {
  ACmThread thread;
  thread.Start();
  EventCounts counts;
  int result = 0;
  thread.GetEventQueue()->SendEvent(new CountedEvent(counts, [&] { result = thread.Start(); }), 0);
  EXPECT_EQ(result, EBUSY);
}

TEST(Thread, StopsWithoutHavingStarted) {
  ACmThread thread;
  EXPECT_EQ(thread.Stop(), 0);
  thread.Start();
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(thread.Stop(), 0);
}

TEST(Thread, RefusesToStopItself) {
  ACmThread thread;
  thread.Start();
  EventCounts counts;
  int result = 0;
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(counts, [&] { result = thread.Stop(); }), 0),
            0);
  EXPECT_EQ(result, EDEADLK);
  EXPECT_NE(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(counts), 0), 0);
  EXPECT_EQ(counts.ended, 2);
}

TEST(Thread, RefusesToStopItselfAlsoOnceAnotherOneHasEndedOnIt) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EventCounts counts;
  int result = 0;
  const auto stopItself = [&] {
    {
      const ACmThread other;
    }
    result = thread.Stop();
  };
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(counts, stopItself), 0), 0);
  EXPECT_EQ(result, EDEADLK);
}

TEST(Thread, RefusesToStopItselfWhileAnotherThreadStopsIt) {
  ACmThread thread;
  thread.Start();
  Gate gate(*thread.GetEventQueue());
  EventCounts counts;
  int result = 0;
  thread.GetEventQueue()->PostEvent(new CountedEvent(counts, [&] { result = thread.Stop(); }), 128, 0);
  auto stopped = std::async(std::launch::async, [&] { return thread.Stop(); });
  gate.Open();
  EXPECT_EQ(stopped.get(), 0);
  EXPECT_EQ(result, EDEADLK);
}

TEST(Thread, RefusesEverythingFromADestructorOfAThreadLocalObjectOfItsOwn) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  ICmEventQueue* const queue = thread.GetEventQueue();
  EventCounts counts;
  bool hasRun = false;
  queue->SendEvent(new CountedEvent(counts,
                                    [&] {
                                      t_atThreadEnd.function = [&] {
                                        hasRun = true;
                                        EXPECT_EQ(thread.Stop(), EDEADLK);
                                        EXPECT_EQ(thread.Start(), EBUSY);
                                        EXPECT_EQ(thread.GetThreadId(), 0u);
                                        EXPECT_EQ(thread.GetEventQueue(), nullptr);
                                        EXPECT_EQ(queue->PostEvent(new CountedEvent(counts), 128, 0),
                                                  ESHUTDOWN);
                                        EXPECT_EQ(queue->SendEvent(new CountedEvent(counts), 0), ESHUTDOWN);
                                      };
                                    }),
                   0);
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_TRUE(hasRun);
  EXPECT_EQ(counts.fired, 1);
  EXPECT_EQ(counts.ended, 3);
  EXPECT_EQ(thread.Start(), 0);
}

TEST(Thread, StopsAnotherOneFromADestructorOfAThreadLocalObject) {
  ACmThread first;
  ACmThread second;
  ASSERT_EQ(first.Start(), 0);
  ASSERT_EQ(second.Start(), 0);
  EventCounts counts;
  int result = -1;
  first.GetEventQueue()->SendEvent(
      new CountedEvent(counts, [&] { t_atThreadEnd.function = [&] { result = second.Stop(); }; }), 0);
  EXPECT_EQ(first.Stop(), 0);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(second.GetThreadId(), 0u);
}

TEST(Thread, KeepsNoMemoryWhetherItRanOrNot) {
  const long allocations = LiveAllocations();
  {
    const ACmThread unused;
    ACmThread stopped;
    ASSERT_EQ(stopped.Start(), 0);
    stopped.Stop();
  }
  EXPECT_EQ(LiveAllocations(), allocations);
}

TEST(Thread, EndsByItselfWhenAnEventDestroysIt) {
  EventCounts counts;
  std::promise<void> ended;
  const long allocations = LiveAllocations();
  {
    auto* const thread = new ACmThread;
    ASSERT_EQ(thread->Start(), 0);
    ICmEventQueue* const queue = thread->GetEventQueue();
    Gate gate(*queue);
    queue->PostEvent(new CountedEvent(counts, [&] { t_atThreadEnd.function = [&] { ended.set_value(); }; }),
                     128, 0);
    queue->PostEvent(new CountedEvent(counts,
                                      [&] {
                                        delete thread;
                                        EXPECT_EQ(queue->PostEvent(new CountedEvent(counts), 128, 0),
                                                  ESHUTDOWN);
                                        EXPECT_EQ(queue->SendEvent(new CountedEvent(counts), 0), ESHUTDOWN);
                                      }),
                     128, 0);
    for (int i = 0; i < 10; ++i) queue->PostEvent(new CountedEvent(counts), 128, 0);
    gate.Open();
    ended.get_future().wait();
  }
  EXPECT_EQ(counts.fired, 12);
  EXPECT_EQ(counts.ended, 14);
  EXPECT_EQ(LiveAllocations(), allocations);
}

TEST(Thread, KeepsItsIdWhileItDrains) {
  ACmThread thread;
  thread.Start();
  Gate gate(*thread.GetEventQueue());
  EventCounts counts;
  bool same = false;
  thread.GetEventQueue()->PostEvent(
      new CountedEvent(counts, [&] { same = thread.GetThreadId() == GetThreadSelfId(); }), 128, 0);
  auto stopped = std::async(std::launch::async, [&] { return thread.Stop(); });
  while (thread.GetEventQueue() != nullptr) std::this_thread::yield();
  gate.Open();
  stopped.wait();
  EXPECT_TRUE(same);
  EXPECT_EQ(thread.GetThreadId(), 0u);
}

TEST(Thread, StartsAgain) {
  ACmThread thread;
  EventCounts counts;
  thread.Start();
  ICmEventQueue* queue = thread.GetEventQueue();
  for (int round = 1; round <= 100; ++round) {
    ASSERT_EQ(queue->SendEvent(new CountedEvent(counts), 0), 0);
    ASSERT_EQ(thread.Stop(), 0);
    ASSERT_EQ(queue->PostEvent(new CountedEvent(counts), 128, 0), ESHUTDOWN);
    ASSERT_EQ(thread.Start(), 0);
    ASSERT_NE(thread.GetEventQueue(), nullptr);
    queue = thread.GetEventQueue();
    ASSERT_EQ(counts.fired, round);
    ASSERT_EQ(counts.ended, 2 * round);
  }
}

TEST(Thread, WithoutAQueueRunsAndStops) {
  ACmThread thread("quiet", false);
  EXPECT_EQ(thread.Start(), 0);
  EXPECT_NE(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.GetEventQueue(), nullptr);
  EXPECT_EQ(thread.Start(), EBUSY);
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.Start(), 0);
}

TEST(Thread, IsStoppedByItsDestructorAfterWhatIsQueued) {
  EventCounts counts;
  {
    ACmThread thread;
    thread.Start();
    for (int i = 0; i < 1000; ++i) thread.GetEventQueue()->PostEvent(new CountedEvent(counts), 128, 0);
  }
  EXPECT_EQ(counts.fired, 1000);
  EXPECT_EQ(counts.ended, 1000);
}

TEST(Thread, CarriesItsNameCutToFifteenCharacters) {
  std::string text = "a_name_of_sixteen";
  ACmThread thread(text.c_str());
  text = "overwritten";
  thread.Start();
  EXPECT_EQ(NameOf(thread), "a_name_of_sixte");

  ACmThread shortName("short");
  shortName.Start();
  EXPECT_EQ(NameOf(shortName), "short");
}

TEST(Thread, IsStoppedByManyThreadsAtOnce) {
  for (int round = 0; round < 50; ++round) {
    EventCounts counts;
    ACmThread thread;
    thread.Start();
    for (int i = 0; i < 50; ++i) thread.GetEventQueue()->PostEvent(new CountedEvent(counts), 128, 0);
    std::vector<std::future<int>> stops;
    for (int i = 0; i < 4; ++i) {
      stops.push_back(std::async(std::launch::async, [&] {
        const int result = thread.Stop();
        EXPECT_EQ(counts.ended, 50);
        EXPECT_EQ(thread.GetThreadId(), 0u);
        return result;
      }));
    }
    for (std::future<int>& stop : stops) EXPECT_EQ(stop.get(), 0);
  }
}

TEST(Thread, HandsOutItsQueueWhileOthersStartAndStopIt) {
  ACmThread thread;
  EventCounts counts;
  std::atomic<bool> over{false};
  std::atomic<int> made{0};
  std::vector<std::thread> clients;
  for (int c = 0; c < 3; ++c) {
    clients.emplace_back([&] {
      while (!over) {
        thread.GetThreadId();
        ICmEventQueue* queue = thread.GetEventQueue();
        if (queue == nullptr) continue;
        ++made;
        if (made % 2 == 0) {
          queue->PostEvent(new CountedEvent(counts), 128, 0);
        } else {
          queue->SendEvent(new CountedEvent(counts), 0);
        }
      }
    });
  }
  for (int round = 0; round < 200; ++round) {
    EXPECT_EQ(thread.Start(), 0);
    std::this_thread::sleep_for(std::chrono::microseconds(100));
    EXPECT_EQ(thread.Stop(), 0);
  }
  over = true;
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(counts.ended, made);
  EXPECT_LE(counts.fired, made);
}
