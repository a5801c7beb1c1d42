// SPDX-License-Identifier: Apache-2.0
// The run thread and its queue: posting, sending, priorities, stopping and starting again.
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "scenarios/Registry.h"
#include "tessel/post.h"
#include "util/ACmThread.h"

using namespace kalStore;
using model::Check;

namespace {

// The callbacks' data are plain: the queue orders them.

void PostsOfTwo() {
  int fired[2] = {};
  {
    ACmThread thread;
    thread.Start();
    std::thread other([&] { Check(Post(thread, [&] { ++fired[0]; }) == 0, "the post is taken"); });
    Check(Post(thread, [&] { ++fired[1]; }) == 0, "the post is taken");
    other.join();
  }
  Check(fired[0] == 1 && fired[1] == 1, "each post fires once");
}

// A post of one thread comes after its earlier ones.
void OrderOfPosts() {
  int last = 0;
  {
    ACmThread thread;
    thread.Start();
    std::thread other([&] { Post(thread, [] {}); });
    for (int i = 1; i <= 3; ++i) {
      Post(thread, [&last, i] {
        Check(last == i - 1, "posts of one thread and priority fire in their order");
        last = i;
      });
    }
    other.join();
  }
  Check(last == 3, "every post fires");
}

// The sender's own stack holds what the loop completes.
void SendAndUse() {
  ACmThread thread;
  thread.Start();
  int sum = 0;
  std::thread other([&] { Check(Send(thread, [&sum] { sum += 1; }) == 0, "the event is fired"); });
  int mine = 0;
  Check(Send(thread, [&] { mine = 1; }) == 0, "the event is fired");
  Check(mine == 1, "the event has fired when the send returns");
  other.join();
  Check(sum == 1, "the other event has fired");
}

void PostAgainstStop() {
  int fired = 0;
  int result = 0;
  ACmThread thread;
  thread.Start();
  std::thread other([&] { result = Post(thread, [&] { ++fired; }); });
  thread.Stop();
  const int before = fired;
  other.join();
  Check(fired == before, "nothing fires after the stop");
  Check(fired == (result == 0 ? 1 : 0), "what is taken fires, what is refused does not");
}

void SendAgainstStop() {
  int fired = 0;
  int result = 0;
  ACmThread thread;
  thread.Start();
  std::thread other([&] { result = Send(thread, [&] { ++fired; }); });
  thread.Stop();
  other.join();
  Check(fired == (result == 0 ? 1 : 0), "what is taken fires, what is refused does not");
}

}  // namespace

MODEL_SCENARIO(QueueFiresEachPostOnce) {
  PostsOfTwo();
}

// The address of an event comes back while another thread pushes.
MODEL_SCENARIO_REUSING(QueueTakesAnAddressAgain) {
  PostsOfTwo();
}

MODEL_SCENARIO(QueueKeepsTheOrderOfAThread) {
  OrderOfPosts();
}

MODEL_SCENARIO(QueueCompletesASend) {
  SendAndUse();
}

MODEL_SCENARIO(QueueRefusesPostsAfterTheStop) {
  PostAgainstStop();
}

MODEL_SCENARIO(QueueRefusesSendsAfterTheStop) {
  SendAgainstStop();
}

// An event that is posted while another one runs goes before what is ready and has a larger number.
MODEL_SCENARIO(QueueHonoursPriorities) {
  constexpr unsigned int kUrgent = 1;
  std::mutex mutex;
  std::condition_variable changed;
  bool isPosted = false;
  int urgentAt = 0, usualAt = 0, fired = 0;
  {
    ACmThread thread;
    thread.Start();
    Post(thread, [&] {
      std::unique_lock lock(mutex);
      while (!isPosted) changed.wait(lock);
    });
    Post(thread, [&] { usualAt = ++fired; });
    std::thread other([&] { Post(thread, [] {}, kUrgent); });
    Post(thread, [&] { urgentAt = ++fired; }, kUrgent);
    {
      const std::lock_guard lock(mutex);
      isPosted = true;
      changed.notify_one();
    }
    other.join();
  }
  Check(urgentAt == 1 && usualAt == 2, "the urgent event goes first");
}

MODEL_SCENARIO(ThreadStartsAgain) {
  int fired = 0, taken = 0;
  ACmThread thread;
  thread.Start();
  std::thread other([&] {
    for (int i = 0; i < 2; ++i) taken += Post(thread, [&] { ++fired; }) == 0 ? 1 : 0;
  });
  thread.Stop();
  Check(thread.Start() == 0, "it starts again");
  other.join();
  thread.Stop();
  Check(fired == taken, "what is taken fires, in whichever life");
}

MODEL_SCENARIO(ThreadIsOpenWithItsId) {
  ACmThread thread;
  std::thread other([&] {
    if (thread.GetEventQueue() != nullptr)
      Check(thread.GetThreadId() != 0, "a thread that has its queue has its id");
  });
  thread.Start();
  other.join();
}

MODEL_SCENARIO(ThreadIsStoppedByTwo) {
  int fired = 0;
  ACmThread thread;
  thread.Start();
  Post(thread, [&] { ++fired; });
  std::thread other([&] {
    Check(thread.Stop() == 0, "it stops");
    Check(fired == 1, "all has fired");
  });
  Check(thread.Stop() == 0, "it stops");
  Check(fired == 1, "all has fired");
  other.join();
}

MODEL_SCENARIO(ThreadRefusesToStopItself) {
  ACmThread thread;
  thread.Start();
  std::thread other([&] { thread.Stop(); });
  Post(thread, [&] { Check(thread.Stop() == EDEADLK, "it refuses"); });
  other.join();
}

MODEL_SCENARIO(ThreadEndsInASentEvent) {
  auto* const thread = new ACmThread;
  thread->Start();
  Post(*thread, [] {});
  Check(Send(*thread, [thread] { delete thread; }) == 0, "the event is fired");
}
