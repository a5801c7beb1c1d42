// SPDX-License-Identifier: Apache-2.0
#include "util/ICmEventQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "libutil/TestEvents.h"
#include "support/AllocationCount.h"
#include "support/TraceLog.h"

namespace {

static_assert(ICmEventQueue::kDefaultPriority == 128);  // Callers are compiled with the number.

class EventQueue : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(m_thread.Start(), 0);
    m_queue = m_thread.GetEventQueue();
    ASSERT_NE(m_queue, nullptr);
  }

  int post(std::function<void()> work, unsigned int priority = ICmEventQueue::kDefaultPriority) {
    return m_queue->PostEvent(new CountedEvent(m_counts, std::move(work)), priority, 0);
  }
  int send(std::function<void()> work) {
    return m_queue->SendEvent(new CountedEvent(m_counts, std::move(work)), 0);
  }
  void expectCounts(int fired, int ended) {
    EXPECT_EQ(m_counts.fired, fired);
    EXPECT_EQ(m_counts.ended, ended);
  }

  EventCounts m_counts;
  ACmThread m_thread{"queue"};
  ICmEventQueue* m_queue = nullptr;
};

}  // namespace

TEST_F(EventQueue, FiresAPostedEventOnItsThreadAndEndsIt) {
  std::promise<unsigned long> firedOn;
  EXPECT_EQ(post([&] { firedOn.set_value(GetThreadSelfId()); }), 0);
  EXPECT_EQ(firedOn.get_future().get(), m_thread.GetThreadId());
  m_thread.Stop();
  expectCounts(1, 1);
}

TEST_F(EventQueue, PostsWithoutWaiting) {
  Gate gate(*m_queue);
  EXPECT_EQ(post(nullptr), 0);
  expectCounts(0, 0);
  gate.Open();
  m_thread.Stop();
  expectCounts(1, 1);
}

TEST_F(EventQueue, PostsAndSendsWithoutAllocation) {
  auto* const posted = new CountedEvent(m_counts);
  auto* const sent = new CountedEvent(m_counts);
  const AllocationCount allocations;
  EXPECT_EQ(m_queue->PostEvent(posted, ICmEventQueue::kDefaultPriority, 0), 0);
  EXPECT_EQ(m_queue->SendEvent(sent, 0), 0);
  EXPECT_EQ(allocations.Count(), 0U);
  expectCounts(2, 2);
}

TEST_F(EventQueue, PostsFromItsOwnThreadForLater) {
  std::vector<int> order;
  EXPECT_EQ(send([&] {
              EXPECT_EQ(post([&] { order.push_back(2); }), 0);
              order.push_back(1);
            }),
            0);
  m_thread.Stop();
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(EventQueue, SendsWaitUntilTheEventHasFiredAndEnded) {
  unsigned long firedOn = 0;
  EXPECT_EQ(send([&] { firedOn = GetThreadSelfId(); }), 0);
  expectCounts(1, 1);
  EXPECT_EQ(firedOn, m_thread.GetThreadId());
  EXPECT_NE(firedOn, GetThreadSelfId());
}

TEST_F(EventQueue, SendsQueueBehindEarlierEventsOfTheDefaultPriority) {
  Gate gate(*m_queue);
  std::vector<int> order;
  post([&] { order.push_back(1); });
  auto sent = std::async(std::launch::async, [&] { return send([&] { order.push_back(2); }); });
  EXPECT_EQ(sent.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  post([&] { order.push_back(0); }, ICmEventQueue::kDefaultPriority - 1);
  gate.Open();
  EXPECT_EQ(sent.get(), 0);
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST_F(EventQueue, SendsFromItsOwnThreadFireAtOnce) {
  std::vector<int> order;
  EXPECT_EQ(send([&] {
              post([&] { order.push_back(3); }, 0);
              EXPECT_EQ(send([&] { order.push_back(1); }), 0);
              EXPECT_EQ(m_counts.ended, 1);
              order.push_back(2);
            }),
            0);
  m_thread.Stop();
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
  expectCounts(3, 3);
}

TEST_F(EventQueue, LetsAMoreUrgentArrivalGoBeforeWhatIsReady) {
  std::vector<int> order;
  std::promise<void> last;
  Gate gate(*m_queue);
  post([&] {
    order.push_back(1);
    post([&] { order.push_back(4); });  // equal: behind all
    post(
        [&] {
          order.push_back(5);
          last.set_value();
        },
        255);
    post([&] { order.push_back(2); }, 10);  // smaller number: before the rest
  });
  post([&] { order.push_back(3); });
  gate.Open();
  last.get_future().wait();
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5}));
  m_thread.Stop();  // Ends the last event before the variables that it refers to.
}

TEST_F(EventQueue, LetsAnUrgentArrivalOfAnotherThreadGoFirst) {
  for (int round = 0; round < 200; ++round) {
    std::vector<int> order;
    Gate gate(*m_queue);
    post([&] { std::async(std::launch::async, [&] { post([&] { order.push_back(1); }, 1); }).wait(); });
    post([&] { order.push_back(2); });
    gate.Open();
    EXPECT_EQ(send(nullptr), 0);
    ASSERT_EQ(order, (std::vector<int>{1, 2}));
  }
}

TEST_F(EventQueue, RefusesANullEvent) {
  EXPECT_EQ(m_queue->PostEvent(nullptr, 128, 0), EINVAL);
  EXPECT_EQ(m_queue->SendEvent(nullptr, 0), EINVAL);
  m_thread.Stop();
  EXPECT_NE(m_queue->PostEvent(nullptr, 128, 0), 0);
  EXPECT_NE(m_queue->SendEvent(nullptr, 0), 0);
}

TEST_F(EventQueue, RefusesButEndsEventsOnceStopped) {
  m_thread.Stop();
  EXPECT_EQ(post(nullptr), ESHUTDOWN);
  expectCounts(0, 1);
  EXPECT_EQ(send(nullptr), ESHUTDOWN);
  expectCounts(0, 2);
}

TEST_F(EventQueue, FiresWhatIsQueuedInOrderWhenStopped) {
  Gate gate(*m_queue);
  std::vector<int> order;
  for (int i = 0; i < 100; ++i) post([&order, i] { order.push_back(i); });
  post([&order] { order.push_back(-1); }, 5);
  auto stopped = std::async(std::launch::async, [&] { return m_thread.Stop(); });
  gate.Open();
  EXPECT_EQ(stopped.get(), 0);
  ASSERT_EQ(order.size(), 101u);
  EXPECT_EQ(order.front(), -1);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i) + 1], i);
  expectCounts(101, 101);
}

TEST_F(EventQueue, RefusesWhatAnyThreadPostsOrSendsWhileItDrains) {
  Gate gate(*m_queue);
  int posted = 0;
  int sent = 0;
  post([&] {
    posted = post(nullptr);
    const int ended = m_counts.ended;
    sent = send(nullptr);
    EXPECT_EQ(m_counts.ended, ended + 1);
  });
  auto stopped = std::async(std::launch::async, [&] { return m_thread.Stop(); });
  while (m_thread.GetEventQueue() != nullptr) std::this_thread::yield();  // until Stop() refuses
  EXPECT_EQ(post(nullptr), ESHUTDOWN);
  EXPECT_EQ(send(nullptr), ESHUTDOWN);
  gate.Open();
  EXPECT_EQ(stopped.get(), 0);
  EXPECT_EQ(posted, ESHUTDOWN);
  EXPECT_EQ(sent, ESHUTDOWN);
  expectCounts(1, 5);
}

TEST_F(EventQueue, ReleasesASenderThatWaitsWhenTheThreadStops) {
  for (int round = 1;; ++round) {
    Gate gate(*m_queue);
    auto sent = std::async(std::launch::async, [&] { return send(nullptr); });
    sent.wait_for(std::chrono::milliseconds(20));
    auto stopped = std::async(std::launch::async, [&] { return m_thread.Stop(); });
    gate.Open();
    const int result = sent.get();
    EXPECT_EQ(stopped.get(), 0);
    if (result != ESHUTDOWN) {
      EXPECT_EQ(result, 0);
      expectCounts(1, round);
      return;
    }
    // On a busy machine the sender may come after the stop, and does not wait.
    SetUp();
  }
}

TEST_F(EventQueue, OutlivesAnExceptionAndReportsIt) {
  TraceLog log(0);
  EXPECT_EQ(post([] { throw std::runtime_error("broken pipe dream"); }), 0);
  EXPECT_EQ(send([] { throw 42; }), ECANCELED);
  expectCounts(2, 2);
  EXPECT_EQ(send(nullptr), 0);

  const std::vector<TraceLog::Line> lines = log.Lines();
  ASSERT_EQ(lines.size(), 2u);
  for (const TraceLog::Line& line : lines) {
    EXPECT_EQ(line.level, 0);
    EXPECT_EQ(line.module, "UTIL");
    EXPECT_NE(line.text.find("OnEventFire threw"), std::string::npos);
  }
  EXPECT_NE(lines[0].text.find("broken pipe dream"), std::string::npos);
}

TEST_F(EventQueue, ReportsNoExceptionWhenNothingIsTraced) {
  TraceLog log(-1);
  EXPECT_EQ(send([] { throw std::runtime_error("unheard"); }), ECANCELED);
  EXPECT_TRUE(log.Lines().empty());
  expectCounts(1, 1);
}

TEST_F(EventQueue, ReturnsTheExceptionOfAnOwnSendAsACode) {
  TraceLog log(0);
  int own = 0;
  EXPECT_EQ(send([&] { own = send([] { throw std::runtime_error("inner"); }); }), 0);
  EXPECT_EQ(own, ECANCELED);
  EXPECT_EQ(log.Count("inner"), 1u);
  expectCounts(2, 2);
}

TEST_F(EventQueue, EndsAnEventThatThrewBeforeItsSenderIsReleased) {
  TraceLog log(-1);
  for (int i = 1; i <= 500; ++i) {
    ASSERT_EQ(send([] { throw 1; }), ECANCELED);
    ASSERT_EQ(m_counts.ended, i);
  }
}

TEST_F(EventQueue, KeepsTheOrderOfEachPostingThread) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 3000;
  std::vector<std::vector<int>> seen(kThreads);
  std::vector<std::thread> posters;
  for (std::size_t t = 0; t < kThreads; ++t) {
    posters.emplace_back([&, t] {
      for (int i = 0; i < kEvents; ++i) post([&seen, t, i] { seen[t].push_back(i); });
    });
  }
  for (std::thread& poster : posters) poster.join();
  m_thread.Stop();
  for (const std::vector<int>& numbers : seen) {
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(kEvents));
    for (int i = 0; i < kEvents; ++i) ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
  }
  expectCounts(kThreads * kEvents, kThreads * kEvents);
}

TEST_F(EventQueue, WakesForEachOfManyEventsThatComeAlone) {
  for (int i = 1; i <= 2000; ++i) {
    ASSERT_EQ(send(nullptr), 0);
    ASSERT_EQ(m_counts.fired, i);
  }
}

TEST(EventQueueStress, FiresWhatItAcceptsOnceAndEndsAllWhileStopping) {
  for (int round = 0; round < 60; ++round) {
    EventCounts counts;
    std::atomic<int> accepted{0};
    std::atomic<int> made{0};
    auto thread = std::make_unique<ACmThread>("stress");
    ASSERT_EQ(thread->Start(), 0);
    ICmEventQueue* queue = thread->GetEventQueue();

    std::vector<std::thread> clients;
    for (unsigned int c = 0; c < 6; ++c) {
      clients.emplace_back([&, c] {
        for (unsigned int i = 0; i < 300; ++i) {
          auto* event = new CountedEvent(counts);
          ++made;
          const bool sends = (c + i) % 3 == 0;
          const int result = sends ? queue->SendEvent(event, 0) : queue->PostEvent(event, i % 4 * 64, 0);
          if (result == 0) ++accepted;
        }
      });
    }
    std::this_thread::sleep_for(std::chrono::microseconds(100 * (round % 10)));
    EXPECT_EQ(thread->Stop(), 0);
    const int firedByThen = counts.fired;
    for (std::thread& client : clients) client.join();
    EXPECT_EQ(counts.fired, firedByThen) << "an event fired after Stop()";
    EXPECT_EQ(counts.fired, accepted);
    EXPECT_EQ(counts.ended, made);
    thread.reset();
  }
}
