// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>

#include "JournalTest.h"
#include "support/AllocationCount.h"
#include "tessel/post.h"

namespace kalStore {
namespace {

class JournalStart : public JournalTest {
 protected:
  JournalStart() { StopJournal(); }
};

TEST(JournalStartDeathTest, FindsAJournalOfWhichNothingIsThere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // In a process in which none was started.
  const auto isNothingThere = [] {
    return JournalCapacity() == 0 && JournalStarts() == 0 && NextJournalNumber() == 1;
  };
  EXPECT_EXIT(std::_Exit(isNothingThere() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(JournalStart, TakesCapacitiesWithinItsLimits) {
  EXPECT_EQ(StartJournal(0), kResultBadArgument);
  EXPECT_EQ(StartJournal(kJournalLargestCapacity + 1), kResultBadArgument);
  {
    const FailAllocation ring(1);  // Hundreds of megabytes.
    EXPECT_THROW(StartJournal(kJournalLargestCapacity), std::bad_alloc);
  }
  EXPECT_FALSE(IsJournalOn());
  for (const std::size_t capacity : {1, 2, 3, 1000}) {
    EXPECT_EQ(StartJournal(capacity), kResultOk);
    EXPECT_TRUE(IsJournalOn());
    EXPECT_EQ(StartJournal(capacity), kResultUnchanged);
    EXPECT_EQ(StopJournal(), kResultOk);
    EXPECT_EQ(StopJournal(), kResultUnchanged);
    EXPECT_FALSE(IsJournalOn());
  }
}

TEST(JournalStartDeathTest, NamesTheSettingOfTheFirstEventsOfAProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto use = [] {
    KalConfig store(7);
    const auto subscribe = [&] {
      store.SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "Key", [](const KalConfigEvent&) {}, nullptr, false);
    };
    subscribe();
    StartJournal(16);
    JournalReader reader;
    store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Key", 1, false, false);
    subscribe();
    std::string events;
    for (JournalEvent event; reader.Next(event);) {
      events += std::to_string(event.number) + " of " + std::to_string(event.cause);
      events += " " + event.name.text + ", ";
    }
    const bool isRight = events == "1 of 0 Key, 2 of 1 Key, 3 of 0 Key, 4 of 0 Key, ";
    if (!isRight) std::fputs(events.c_str(), stderr);
    std::_Exit(isRight ? 17 : 1);
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(17), "");
}

TEST_F(JournalStart, RoundsTheCapacityUp) {
  StartJournal(5);
  const JournalReader start;
  m_reader = start;
  KalConfig store(kCall);
  for (int i = 0; i < 20; ++i) store.SetKalConfig(kVideo, "Key", i, false, false);
  EXPECT_EQ(Events().size(), 8u);
}

TEST_F(JournalStart, CountsTheStartsAndGivesTheCapacityOfTheLastOne) {
  const std::uint64_t starts = JournalStarts();
  StartJournal(5);
  EXPECT_EQ(JournalStarts(), starts + 1);
  EXPECT_EQ(JournalCapacity(), 8u);
  StartJournal(100);  // It is on.
  StopJournal();
  EXPECT_EQ(JournalStarts(), starts + 1);
  EXPECT_EQ(JournalCapacity(), 8u);
  StartJournal(100);
  EXPECT_EQ(JournalStarts(), starts + 2);
  EXPECT_EQ(JournalCapacity(), 128u);
}

TEST_F(JournalStart, StopsItsOwnStartAndNoOther) {
  std::uint64_t start = 0, other = 0;
  EXPECT_EQ(StartOwnJournal(0, start), kResultBadArgument);
  EXPECT_EQ(start, 0u);
  EXPECT_EQ(StartOwnJournal(5, start), kResultOk);
  EXPECT_EQ(start, JournalStarts());
  EXPECT_EQ(JournalCapacity(), 8u);
  EXPECT_EQ(StartOwnJournal(5, other), kResultUnchanged);
  EXPECT_EQ(other, 0u);
  EXPECT_EQ(StopOwnJournal(other), kResultUnchanged);
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(StopOwnJournal(start), kResultOk);
  EXPECT_FALSE(IsJournalOn());
  EXPECT_EQ(StopOwnJournal(start), kResultUnchanged);
  EXPECT_EQ(StartJournal(5), kResultOk);
  EXPECT_EQ(StopOwnJournal(start), kResultUnchanged);
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(StopOwnJournal(start + 1), kResultOk);
}

TEST_F(JournalStart, OffNothingIsWritten) {
  const std::uint64_t number = NextJournalNumber();
  {
    KalConfigHelper facade(kCall);
    const JournalOrigin origin("off");
    facade.SubscribeConfig("MaxFps", [](const KalConfigEvent&) {}, kVideo);
    facade.SetKalConfig("MaxFps", 1, kVideo);
    facade.RemoveKalConfig("MaxFps", kVideo);
    facade.ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"15"}]})");
    facade.GetDynamicConfig("MaxFps", kVideo);
    void* entity = nullptr;
    createTesselEntity(KAL_TESSEL_AUDIO, kCall, &entity);
    releaseTesselEntity(KAL_TESSEL_AUDIO, kCall, entity);
  }
  CleanUpKalConfig(kCall);
  EXPECT_EQ(NextJournalNumber(), number);
}

TEST_F(JournalStart, MakesEachRingOnce) {
  StartJournal(2048);
  StopJournal();
  const AllocationCount allocations;
  StartJournal(2048);
  StopJournal();
  EXPECT_EQ(allocations.Count(), 0u);
}

TEST_F(JournalStart, LeavesTheJournalOffWithoutMemory) {
  bool failed = false;
  try {
    const FailAllocation first(1);
    StartJournal(4096);  // No other test's capacity.
  } catch (const std::bad_alloc&) {
    failed = true;
  }
  EXPECT_TRUE(failed);
  EXPECT_FALSE(IsJournalOn());
  EXPECT_EQ(StartJournal(4096), kResultOk);
}

TEST_F(JournalStart, AllocatesNothingForAnEvent) {
  KalConfig store(kCall);
  const std::string name(100, 'n');
  const std::string value(1000, 'v');
  const auto allocationsOfASet = [&] {
    const ConfigData first(value), second(value + "2");
    for (const ConfigData& data : {first, second})
      store.SetKalConfig(kVideo, name.c_str(), data, false, false);
    ConfigData third(value + "3");
    const AllocationCount allocations;
    store.SetKalConfig(kVideo, name.c_str(), std::move(third), false, false);
    ConfigData answer;
    store.GetDynamicConfig(kVideo, name.c_str(), answer, {});
    store.RemoveKalConfig(kVideo, name.c_str());
    return allocations.Count();
  };
  store.SubscribeConfig(kVideo, name.c_str(), [](const KalConfigEvent&) {}, nullptr, false);
  const std::size_t off = allocationsOfASet();
  StartJournal(64);
  const JournalOrigin origin("a label that is longer than thirty-two bytes");
  EXPECT_EQ(allocationsOfASet(), off);
}

// Setters, callbacks on their run threads, readers: none of them minds a journal that starts and stops.
TEST_F(JournalStart, StartsAndStopsWhileOperationsRun) {
  std::atomic<bool> isOver{false};
  ACmThread worker("worker");
  worker.Start();
  const auto set = [&](std::uint32_t callId) {
    KalConfigHelper facade(callId);
    facade.SubscribeConfig("Key", [](const KalConfigEvent&) {}, kVideo);
    facade.SubscribeConfig("Key", [](const KalConfigEvent&) {}, kVideo, &worker, true);
    for (int value = 0; !isOver; ++value) {
      const JournalOrigin origin("setter");
      facade.SetKalConfig("Key", value, kVideo);
      facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, value % 2 == 0);
      if (value % 64 == 0) Send(worker, [] {});
    }
  };
  const auto read = [&] {
    JournalReader reader;
    std::uint64_t last = 0;
    for (JournalEvent event; !isOver;) {
      if (!reader.Next(event)) continue;
      EXPECT_GT(event.number, last);
      last = event.number;
      if (event.kind == JournalKind::kSet && event.name.text == "Key") {
        EXPECT_EQ(event.label.text, "setter");
        EXPECT_TRUE(event.callId == 8 || event.callId == 9);
        EXPECT_EQ(std::to_string(std::stoi(event.newValue->text)), event.newValue->text);
      }
    }
  };
  std::vector<std::thread> threads;
  threads.emplace_back(set, 8);
  threads.emplace_back(set, 9);
  threads.emplace_back(read);
  for (int round = 0; round < 300; ++round) {
    StartJournal(std::size_t{1} << round % 5);
    std::this_thread::yield();
    StopJournal();
  }
  isOver = true;
  for (std::thread& thread : threads) thread.join();
  CleanUpKalConfig(8);
  CleanUpKalConfig(9);
}

}  // namespace
}  // namespace kalStore
