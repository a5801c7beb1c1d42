// SPDX-License-Identifier: Apache-2.0
// Everything is used where a program's code runs without a caller that it knows: in a trace sink, and in the
// destructors of thread-local objects.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string_view>
#include <thread>

#include "libutil/TestEvents.h"
#include "surroundings/Everything.h"
#include "tessel/journal.h"
#include "util/util.h"

namespace kalStore {
namespace {

thread_local bool t_isInSink = false;

/// Uses everything from every line, but from those that it causes itself.
struct SinkOfEverything {
  SinkOfEverything() {
    set_util_trace_sink(&Sink, this);
    set_external_trace_mask(2);
  }
  ~SinkOfEverything() {
    set_external_trace_mask(0);
    set_util_trace_sink(nullptr, nullptr);
  }
  SinkOfEverything(const SinkOfEverything&) = delete;
  SinkOfEverything& operator=(const SinkOfEverything&) = delete;

  static void Sink(void* context, int, const char*, const char* text, unsigned int) {
    auto& self = *static_cast<SinkOfEverything*>(context);
    if (std::exchange(t_isInSink, true)) return;
    ++self.lines;
    // Under the lock of the statistics, while another thread may use them in a line under the stores' lock.
    const bool isOfStatistics = std::string_view(text).find("CKalTessel::") != std::string_view::npos;
    isOfStatistics ? UseStatistics() : UseEverything();
    t_isInSink = false;
  }

  std::atomic<int> lines{0};
};

TEST(Everything, MayBeUsedInEveryLineOfEverything) {
  SinkOfEverything sink;
  UseEverything();
  EXPECT_GT(sink.lines, 30);
  DestroyKalConfig();
}

TEST(Everything, MayBeUsedInEveryLineOfEverythingOnSeveralThreads) {
  {
    SinkOfEverything sink;
    const auto use = [] {
      for (int i = 0; i < 10; ++i) UseEverything();
    };
    std::thread first(use);
    std::thread second(use);
    first.join();
    second.join();
    // Each use has at least the line of its refused set; how many of the others depends on the other thread.
    EXPECT_GE(sink.lines, 20);
  }
  DestroyKalConfig();
  EXPECT_TRUE(InspectStatistics().empty());
}

/// Uses everything when its thread ends: after all other thread-local objects, since it was made first.
struct UsesEverythingAtTheEnd {
  ~UsesEverythingAtTheEnd() {
    if (!end) return;
    UseEverything();
    end();
  }
  std::function<void()> end;
};
thread_local UsesEverythingAtTheEnd t_usesEverythingAtTheEnd;

TEST(Everything, MayBeUsedInADestructorOfAThreadLocalObject) {
  ASSERT_EQ(StartJournal(1024), kResultOk);
  EventCounts counts;
  int ends = 0;
  ACmThread other;
  ASSERT_EQ(other.Start(), 0);
  const auto begin = [&] {
    t_usesEverythingAtTheEnd.end = [&] {
      other.GetEventQueue()->SendEvent(new CountedEvent(counts, &UseEverything), 0);
      ++ends;
    };
    UseEverything();
  };
  std::thread(begin).join();
  EXPECT_EQ(ends, 1);
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  thread.GetEventQueue()->PostEvent(new CountedEvent(counts, begin), ICmEventQueue::kDefaultPriority, 0);
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(ends, 2);
  EXPECT_EQ(counts.fired, 3);
  EXPECT_EQ(other.Stop(), 0);
  EXPECT_EQ(StopJournal(), kResultOk);
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
}

}  // namespace
}  // namespace kalStore
