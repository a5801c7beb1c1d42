// SPDX-License-Identifier: Apache-2.0
#include "util/util_trace.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/AllocationCount.h"
#include "support/TraceLog.h"

namespace {

void Trace(const std::string& text, int level = 0) {
  util_adapter_trace(level, "UTIL", text.c_str(), static_cast<unsigned int>(text.size()));
}

/// A sink's context that is alive, and checks that it is, until destroyed.
class Receiver {
 public:
  explicit Receiver(std::function<void()> work = nullptr) : m_work(std::move(work)) {}
  ~Receiver() { m_alive = 0; }
  static void Sink(void* context, int, const char*, const char*, unsigned int) {
    auto* self = static_cast<Receiver*>(context);
    ASSERT_EQ(self->m_alive, kAlive);
    ++self->calls;
    if (self->m_work) self->m_work();
    ASSERT_EQ(self->m_alive, kAlive);
  }
  std::atomic<int> calls{0};

 private:
  static constexpr int kAlive = 0x51ce;
  int m_alive = kAlive;  // Plain: a call that outlives the receiver is a data race as well.
  std::function<void()> m_work;
};

class TraceSink : public testing::Test {
 protected:
  void TearDown() override { set_util_trace_sink(nullptr, nullptr); }
};

}  // namespace

TEST(TraceMask, IsReadAsItWasSet) {
  const int previous = get_external_trace_mask();
  EXPECT_EQ(previous, 0);
  for (int mask : {-1, 0, 1, 2, 100}) {
    set_external_trace_mask(mask);
    EXPECT_EQ(get_external_trace_mask(), mask);
  }
  set_external_trace_mask(previous);
}

TEST_F(TraceSink, ReceivesTheLineAsItWasGiven) {
  struct Line {
    int level = -1;
    std::string module;
    std::string text;
    char behind = 'x';
  } line;
  set_util_trace_sink(
      [](void* context, int level, const char* module, const char* text, unsigned int length) {
        *static_cast<Line*>(context) = {level, module, std::string(text, length), text[length]};
      },
      &line);
  util_adapter_trace(1, "MOD", "some text", 9);
  EXPECT_EQ(line.level, 1);
  EXPECT_EQ(line.module, "MOD");
  EXPECT_EQ(line.text, "some text");
  EXPECT_EQ(line.behind, '\0');
  util_adapter_trace(2, nullptr, nullptr, 7);
  EXPECT_EQ(line.module, "");
  EXPECT_EQ(line.text, "");
}

TEST_F(TraceSink, ReceivesLinesWhateverTheMask) {
  TraceLog log(-1);
  Trace("above the mask", 2);
  EXPECT_EQ(log.Count("above the mask"), 1u);
}

TEST_F(TraceSink, IsStandardErrorUnlessSet) {
  Receiver receiver;
  set_util_trace_sink(&Receiver::Sink, &receiver);
  testing::internal::CaptureStderr();
  Trace("to the receiver");
  set_util_trace_sink(nullptr, &receiver);
  Trace("to standard error", 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[UTIL 1] to standard error\n");
  EXPECT_EQ(receiver.calls, 1);
}

// In a process that has written no line yet.
TEST(TraceSinkDeathTest, ReceivesTheFirstLineWithoutMemory) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto traceWithoutMemory = [] {
    const FailAllocation first(1);
    util_adapter_trace(0, "UTIL", "out of memory", 13);
    std::_Exit(first.Fired() ? 1 : 0);
  };
  EXPECT_EXIT(traceWithoutMemory(), testing::ExitedWithCode(0), "out of memory");
}

TEST_F(TraceSink, KeepsLongLinesOfSeveralThreadsWholeOnStandardError) {
  testing::internal::CaptureStderr();
  std::vector<std::thread> threads;
  for (char letter : {'a', 'b', 'c'}) {
    threads.emplace_back([letter] {
      for (int i = 0; i < 50; ++i) Trace(std::string(1000, letter));
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string all = testing::internal::GetCapturedStderr();
  std::size_t lines = 0;
  for (std::size_t start = 0; start < all.size(); ++lines) {
    const std::size_t end = all.find('\n', start);
    ASSERT_NE(end, std::string::npos);
    ASSERT_EQ(all.substr(start, end - start), "[UTIL 0] " + std::string(1000, all[end - 1]));
    start = end + 1;
  }
  EXPECT_EQ(lines, 150u);
}

TEST_F(TraceSink, MayRunOnSeveralThreadsAtOnce) {
  std::atomic<int> inside{0};
  Receiver receiver([&] {
    ++inside;
    while (inside < 2) std::this_thread::yield();
  });
  set_util_trace_sink(&Receiver::Sink, &receiver);
  std::thread first([] { Trace("1"); });
  std::thread second([] { Trace("2"); });
  first.join();
  second.join();
  EXPECT_EQ(inside, 2);
  set_util_trace_sink(nullptr, nullptr);
}

TEST_F(TraceSink, IsWaitedForWhenReplaced) {
  std::promise<void> entered;
  std::promise<void> leave;
  // Waits in its first call alone: lines come to it until it is replaced.
  Receiver slow([&, isFirst = true]() mutable {
    if (!std::exchange(isFirst, false)) return;
    entered.set_value();
    leave.get_future().wait();
  });
  Receiver next;
  set_util_trace_sink(&Receiver::Sink, &slow);
  std::thread tracer([] { Trace("slow"); });
  entered.get_future().wait();
  auto replaced = std::async(std::launch::async, [&] { set_util_trace_sink(&Receiver::Sink, &next); });
  while (next.calls == 0) Trace("goes to the next one");
  EXPECT_EQ(replaced.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
  const int calls = slow.calls;
  leave.set_value();
  replaced.get();
  tracer.join();
  Trace("goes to the next one");
  EXPECT_EQ(slow.calls, calls);
  set_util_trace_sink(nullptr, nullptr);
}

// Its calls began after it was set.
TEST_F(TraceSink, IsNotWaitedForByWhoSetIt) {
  std::promise<void> entered, leave, nextEntered, nextLeave;
  Receiver slow([&, isFirst = true]() mutable {
    if (!std::exchange(isFirst, false)) return;
    entered.set_value();
    leave.get_future().wait();
  });
  Receiver next([&] {
    nextEntered.set_value();
    nextLeave.get_future().wait();
  });
  set_util_trace_sink(&Receiver::Sink, &slow);
  std::thread tracer([] { Trace("slow"); });
  entered.get_future().wait();
  std::thread nextTracer([&] {
    while (next.calls == 0) Trace("goes to the next one");
  });
  std::thread opener([&] {
    nextEntered.get_future().wait();
    leave.set_value();
  });
  set_util_trace_sink(&Receiver::Sink, &next);
  nextLeave.set_value();
  for (std::thread* const thread : {&tracer, &nextTracer, &opener}) thread->join();
  EXPECT_EQ(next.calls, 1);
}

TEST_F(TraceSink, MayTraceItself) {
  Receiver receiver;
  Receiver outer([&, depth = 0]() mutable {
    if (++depth <= 3) Trace("nested");
  });
  set_util_trace_sink(&Receiver::Sink, &outer);
  Trace("first");
  EXPECT_EQ(outer.calls, 4);
  set_util_trace_sink(nullptr, nullptr);
}

TEST_F(TraceSink, MayReplaceItselfWithoutWaiting) {
  Receiver next;
  Receiver first([&] { set_util_trace_sink(&Receiver::Sink, &next); });
  set_util_trace_sink(&Receiver::Sink, &first);
  Trace("1");
  Trace("2");
  EXPECT_EQ(first.calls, 1);
  EXPECT_EQ(next.calls, 1);
  set_util_trace_sink(nullptr, nullptr);
}

TEST_F(TraceSink, IsWaitedForEvenWhenItReplacedItselfBefore) {
  Receiver next;
  std::promise<void> replaced;
  std::promise<void> leave;
  Receiver first([&] {
    set_util_trace_sink(&Receiver::Sink, &next);
    replaced.set_value();
    leave.get_future().wait();
  });
  set_util_trace_sink(&Receiver::Sink, &first);
  std::thread tracer([] { Trace("1"); });
  replaced.get_future().wait();
  auto restored = std::async(std::launch::async, [] { set_util_trace_sink(nullptr, nullptr); });
  EXPECT_EQ(restored.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
  leave.set_value();
  restored.get();
  tracer.join();
}

TEST_F(TraceSink, SurvivesTwoSinksThatReplaceEachOther) {
  std::atomic<int> inside{0};
  Receiver next;
  Receiver first([&] {
    ++inside;
    while (inside < 2) std::this_thread::yield();
    set_util_trace_sink(&Receiver::Sink, &next);
  });
  set_util_trace_sink(&Receiver::Sink, &first);
  std::thread one([] { Trace("1"); });
  std::thread two([] { Trace("2"); });
  one.join();
  two.join();
  EXPECT_EQ(first.calls, 2);
  set_util_trace_sink(nullptr, nullptr);
}

// An exception used to leave the count of running calls too high: the next one to set a sink waited for ever.
TEST_F(TraceSink, MayThrowAndTheCallOfATraceLineDoesNot) {
  Receiver thrower([] { throw std::runtime_error("from a sink"); });
  Receiver next;
  set_util_trace_sink(&Receiver::Sink, &thrower);
  EXPECT_NO_THROW(Trace("1"));
  EXPECT_NO_THROW(Trace("2"));
  EXPECT_EQ(thrower.calls, 2);
  set_util_trace_sink(&Receiver::Sink, &next);
  Trace("3");
  EXPECT_EQ(next.calls, 1);
}

TEST_F(TraceSink, MayThrowAfterItReplacedItself) {
  Receiver next;
  Receiver first([&] {
    set_util_trace_sink(&Receiver::Sink, &next);
    throw 1;
  });
  set_util_trace_sink(&Receiver::Sink, &first);
  EXPECT_NO_THROW(Trace("1"));
  Trace("2");
  EXPECT_EQ(first.calls, 1);
  EXPECT_EQ(next.calls, 1);
}

TEST_F(TraceSink, IsWaitedForByAThreadWhoseOwnSinkThrew) {
  Receiver thrower([] { throw 1; });
  set_util_trace_sink(&Receiver::Sink, &thrower);
  Trace("1");

  std::promise<void> entered;
  std::promise<void> leave;
  std::atomic<bool> isLeft{false};
  Receiver slow([&] {
    entered.set_value();
    leave.get_future().wait();
    isLeft = true;
  });
  Receiver next;
  set_util_trace_sink(&Receiver::Sink, &slow);
  std::thread tracer([] { Trace("slow"); });
  entered.get_future().wait();
  std::thread opener([&] {
    while (next.calls == 0) Trace("goes to the next one");
    leave.set_value();
  });
  set_util_trace_sink(&Receiver::Sink, &next);
  EXPECT_TRUE(isLeft);
  opener.join();
  tracer.join();
}

TEST_F(TraceSink, MayEndItsThread) {
  static bool isUnwound;
  isUnwound = false;
  struct Unwound {
    ~Unwound() { isUnwound = true; }
  };
  Receiver ender([] { pthread_exit(nullptr); });
  set_util_trace_sink(&Receiver::Sink, &ender);
  std::thread([] {
    const Unwound unwound;
    Trace("the last of this thread");
    FAIL() << "the thread goes on";
  }).join();
  EXPECT_TRUE(isUnwound);
  set_util_trace_sink(nullptr, nullptr);  // Waits for no call of that thread.
  EXPECT_EQ(ender.calls, 1);
}

TEST_F(TraceSink, MayThrowWhileItIsReplacedUnderLoad) {
  std::atomic<bool> isOver{false};
  std::vector<std::thread> tracers;
  const auto fail = [] { throw 1; };
  auto current = std::make_unique<Receiver>(fail);
  set_util_trace_sink(&Receiver::Sink, current.get());
  for (int i = 0; i < 3; ++i) {
    tracers.emplace_back([&] {
      while (!isOver) Trace("load");
    });
  }
  for (int round = 0; round < 300; ++round) {
    auto next = std::make_unique<Receiver>(fail);
    set_util_trace_sink(&Receiver::Sink, next.get());
    current = std::move(next);
  }
  isOver = true;
  for (std::thread& tracer : tracers) tracer.join();
  set_util_trace_sink(nullptr, nullptr);
}

TEST_F(TraceSink, IsNeverCalledAfterItWasReplacedUnderLoad) {
  std::atomic<bool> over{false};
  std::atomic<int> total{0};
  auto current = std::make_unique<Receiver>();
  set_util_trace_sink(&Receiver::Sink, current.get());
  std::vector<std::thread> tracers;
  std::atomic<int> traced{0};
  for (int i = 0; i < 3; ++i) {
    tracers.emplace_back([&] {
      while (!over) {
        Trace("load");
        ++traced;
      }
    });
  }
  for (int round = 0; round < 1000; ++round) {
    auto next = std::make_unique<Receiver>();
    set_util_trace_sink(&Receiver::Sink, next.get());
    total += current->calls;
    current = std::move(next);
  }
  over = true;
  for (std::thread& tracer : tracers) tracer.join();
  set_util_trace_sink(nullptr, nullptr);
  total += current->calls;
  EXPECT_EQ(total, traced);
}

TEST(ThreadpoolJob, IsNoneAtFirst) {
  std::thread([] {
    EXPECT_EQ(cm_get_current_threadpool_job_id(), 0u);
    EXPECT_EQ(cm_get_current_threadpool_job_name(), nullptr);
  }).join();
}

TEST(ThreadpoolJob, BelongsToTheThreadThatSetIt) {
  std::string name = "mixer";
  cm_set_current_threadpool_job(7, name.c_str());
  name = "other";
  EXPECT_EQ(cm_get_current_threadpool_job_id(), 7u);
  EXPECT_STREQ(cm_get_current_threadpool_job_name(), "mixer");
  std::thread([] {
    EXPECT_EQ(cm_get_current_threadpool_job_id(), 0u);
    EXPECT_EQ(cm_get_current_threadpool_job_name(), nullptr);
    cm_set_current_threadpool_job(8, "decoder");
    EXPECT_STREQ(cm_get_current_threadpool_job_name(), "decoder");
  }).join();
  EXPECT_EQ(cm_get_current_threadpool_job_id(), 7u);
  EXPECT_STREQ(cm_get_current_threadpool_job_name(), "mixer");
  cm_set_current_threadpool_job(0, nullptr);
  EXPECT_EQ(cm_get_current_threadpool_job_id(), 0u);
  EXPECT_EQ(cm_get_current_threadpool_job_name(), nullptr);
}

TEST(ThreadpoolJob, CutsItsNameTo63Characters) {
  for (std::size_t length : {0u, 62u, 63u, 64u, 500u}) {
    cm_set_current_threadpool_job(1, std::string(length, 'n').c_str());
    EXPECT_EQ(std::strlen(cm_get_current_threadpool_job_name()), std::min<std::size_t>(length, 63));
  }
  cm_set_current_threadpool_job(0, nullptr);
}

TEST(ThreadpoolJob, MayKeepTheNameOfTheJobBefore) {
  cm_set_current_threadpool_job(1, "same");
  cm_set_current_threadpool_job(2, cm_get_current_threadpool_job_name());
  EXPECT_EQ(cm_get_current_threadpool_job_id(), 2u);
  EXPECT_STREQ(cm_get_current_threadpool_job_name(), "same");
  cm_set_current_threadpool_job(3, cm_get_current_threadpool_job_name() + 1);
  EXPECT_STREQ(cm_get_current_threadpool_job_name(), "ame");
  cm_set_current_threadpool_job(0, nullptr);
}

// In a process that has made no report.
TEST(AssertionReportDeathTest, IsNoneAtFirst) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(cm_assertion_report_count() == 0 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(AssertionReport, CountsForTheProcess) {
  const unsigned long before = cm_assertion_report_count();
  cm_assertion_report();
  std::thread([] { cm_assertion_report(); }).join();
  EXPECT_EQ(cm_assertion_report_count(), before + 2);
}
