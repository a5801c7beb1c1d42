// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <atomic>
#include <barrier>
#include <latch>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "TypedTest.h"
#include "support/AllocationCount.h"
#include "support/TraceLog.h"
#include "tessel/KalConfig.h"
#include "tessel/LiveConfig.h"

namespace {

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
constexpr ConfigKey<int> kMinFps{KAL_CONFIG_GROUP_AUDIO, "MinFps", 30};
constexpr ConfigKey<long> kStamp{KAL_CONFIG_GROUP_VIDEO, "Stamp", 0};

class LiveThreads : public TypedTest {
 protected:
  CallStore m_call{kCall};
};

/// What a thread has seen: the values of one setter count up, so it never sees an earlier one again, however
/// it reads.
class Seen {
 public:
  static constexpr int kSetters = 3;
  static long StampOf(int setter, long count) { return count * kSetters + setter; }

  void Note(long stamp) {
    long& last = m_last[static_cast<std::size_t>(stamp % kSetters)];
    if (stamp < last) wentBack = true;
    last = stamp;
  }

  bool wentBack = false;

 private:
  std::array<long, kSetters> m_last{};
};

}  // namespace

// Each setter also reads, by the live value and by the store in turn.
TEST_F(LiveThreads, NeverGoBackWhoeverSetsAndWhereverTheyRead) {
  constexpr long kSets = 1000;
  constexpr long kOverlaps = 16;  // One of so many deliveries is slow, so that it overlaps with other sets.
  const LiveConfig stamp(*m_call, kStamp);
  KalConfigHelper facade(kCall);
  const Subscription slow(*m_call, KAL_CONFIG_GROUP_VIDEO, "Stamp", [](const KalConfigEvent& event) {
    if (event.m_newValue.ToInt64() % kOverlaps == 0) std::this_thread::yield();
  });
  std::atomic<bool> isOver{false};
  std::atomic<int> faults{0};
  std::barrier begin(Seen::kSetters + 1);

  std::vector<std::thread> threads;
  for (int setter = 0; setter < Seen::kSetters; ++setter) {
    threads.emplace_back([&, setter] {
      Seen seen;
      begin.arrive_and_wait();
      for (long count = 1; count <= kSets; ++count) {
        const long own = Seen::StampOf(setter, count);
        kStamp.Set(*m_call, own);
        seen.Note(own);
        seen.Note(stamp.Get());
        if (count % 4 == 0) seen.Note(kStamp.Get(facade));
        if (count % 4 == 2) seen.Note(LiveConfig(facade, kStamp).Get());
        seen.Note(stamp.Get());
      }
      if (seen.wentBack) ++faults;
    });
  }
  std::thread reader([&] {
    Seen seen;
    begin.arrive_and_wait();
    while (!isOver) {
      seen.Note(stamp.Get());
      seen.Note(kStamp.Get(*m_call));
    }
    if (seen.wentBack) ++faults;
  });
  for (std::thread& thread : threads) thread.join();
  isOver = true;
  reader.join();
  EXPECT_EQ(0, faults);
  EXPECT_EQ(kStamp.Get(*m_call), stamp.Get());
}

// A set that finds its value stored returns at once, maybe before the other set of that value has delivered.
TEST_F(LiveThreads, SeeTheValueOfASetThatFoundItStored) {
  constexpr int kRounds = 200;
  const LiveConfig maxFps(*m_call, kMaxFps);
  const Subscription slow(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                          [](const KalConfigEvent&) { std::this_thread::yield(); });
  std::atomic<int> faults{0};
  std::barrier round(2);
  const auto setter = [&] {
    for (int value = 1; value <= kRounds; ++value) {
      round.arrive_and_wait();
      kMaxFps.Set(*m_call, value);
      if (maxFps.Get() != value) ++faults;
      round.arrive_and_wait();
    }
  };
  std::thread other(setter);
  setter();
  other.join();
  EXPECT_EQ(0, faults);
}

TEST_F(LiveThreads, SeeTheLastOfSetsAndRemovals) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  for (int round = 0; round < 100; ++round) {
    std::thread sets([&] { kMaxFps.Set(*m_call, round); });
    std::thread removes([&] { kMaxFps.Remove(*m_call); });
    std::thread removesAll([&] { m_call->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO); });
    std::thread announces([&] { m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, false, true); });
    for (std::thread* thread : {&sets, &removes, &removesAll, &announces}) thread->join();
    ASSERT_EQ(kMaxFps.Get(*m_call), maxFps.Get());
  }
}

TEST_F(LiveThreads, FindTheEarlierOfTwoSettingsOnceTheySeeTheLaterOne) {
  constexpr int kSets = 5000;
  const LiveConfig first(*m_call, kMaxFps);
  const LiveConfig second(*m_call, kMinFps);
  kMaxFps.Set(*m_call, 0);
  kMinFps.Set(*m_call, 0);
  std::thread setter([&] {
    for (int value = 1; value <= kSets; ++value) {
      kMaxFps.Set(*m_call, value);
      kMinFps.Set(*m_call, value);
    }
  });
  int faults = 0;
  for (int seen = 0; seen < kSets;) {
    seen = second.Get();
    if (first.Get() < seen) ++faults;
  }
  setter.join();
  EXPECT_EQ(0, faults);
}

// The setter is inside its set, with the lock of the group's values, when the other thread reads.
TEST_F(LiveThreads, ReadWhileASetterHoldsTheLock) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  kMaxFps.Set(*m_call, 15);
  int seen = 0;
  bool fired = false;
  {
    const std::string longText(1000, '1');
    ConfigData value(longText);
    const AtAllocation inside(1000, [&] { std::thread([&] { seen = maxFps.Get(); }).join(); });
    m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Long", std::move(value), false, false);
    fired = inside.Fired();
  }
  EXPECT_TRUE(fired);
  EXPECT_EQ(15, seen);
}

// A program's own operator new may do so, or its handler of failed allocations.
TEST_F(LiveThreads, MakeAndEndItInsideEveryAllocationThatMakingOneTakes) {
  KalConfigHelper unbound;
  std::vector<LiveConfig<int>> waiting;
  waiting.reserve(300);
  int calls = 0;
  for (std::size_t size = 1; size <= 4096; size += 15) {
    const AtAllocation inside(size, [&] {
      ++calls;
      EXPECT_EQ(30, LiveConfig(unbound, kMinFps).Get());
    });
    waiting.emplace_back(unbound, kMaxFps);
  }
  EXPECT_GT(calls, 3);
  unbound.SetCallId(kCall);
  kMaxFps.Set(*m_call, 15);
  for (const LiveConfig<int>& maxFps : waiting) EXPECT_EQ(15, maxFps.Get());
}

TEST_F(LiveThreads, MakeAndEndItWhileOthersSet) {
  KalConfigHelper facade(kCall);
  kMaxFps.Set(*m_call, 0);
  std::atomic<bool> isOver{false};
  std::atomic<int> faults{0};
  std::vector<std::thread> threads;
  for (int maker = 0; maker < 2; ++maker) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) {
        const int before = kMaxFps.Get(*m_call);
        const LiveConfig maxFps(facade, kMaxFps);
        if (maxFps.Get() < before) ++faults;
      }
      isOver = true;
    });
  }
  for (int value = 1; !isOver; ++value) kMaxFps.Set(*m_call, value);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, faults);
}

TEST_F(LiveThreads, MakeAndEndItWhileItsFacadeBinds) {
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
  constexpr ConfigKey<int> kDefaultMaxFps{KAL_CONFIG_GROUP_DEFAULT, "MaxFps", 30};
  for (int round = 0; round < 100; ++round) {
    KalConfigHelper facade;
    std::latch begin(3);
    std::optional<LiveConfig<int>> kept;
    std::thread makes([&] {
      begin.arrive_and_wait();
      for (int i = 0; i < 5; ++i) (void)LiveConfig(facade, kDefaultMaxFps);
      kept.emplace(facade, kDefaultMaxFps);
    });
    std::thread chooses([&] {
      begin.arrive_and_wait();
      facade.SetDefaultGroup(KAL_CONFIG_GROUP_VIDEO);
    });
    begin.arrive_and_wait();
    facade.SetCallId(kCall);
    makes.join();
    chooses.join();
    ASSERT_EQ(15, kept->Get());
  }
}

// A set through the facade succeeds as soon as it has its store, while the binding call still runs.
TEST_F(LiveThreads, SeeWhatIsSetThroughAFacadeThatIsBinding) {
  const TraceLog silent(-1);  // the sets that come too early report it
  for (int round = 0; round < 100; ++round) {
    KalConfigHelper facade;
    const LiveConfig maxFps(facade, kMaxFps);
    kMaxFps.Remove(*m_call);
    std::thread binds([&] { facade.SetCallId(kCall); });
    while (!kMaxFps.Set(facade, 15).IsStored()) std::this_thread::yield();
    EXPECT_EQ(15, maxFps.Get());
    binds.join();
  }
}

TEST_F(LiveThreads, EndItWhileTheStoreOrTheFacadeEnds) {
  for (int round = 0; round < 100; ++round) {
    auto store = std::make_unique<KalConfig>(1);
    auto facade = std::make_unique<KalConfigHelper>();
    std::optional<LiveConfig<int>> ofStore(std::in_place, *store, kMaxFps);
    std::optional<LiveConfig<int>> ofFacade(std::in_place, *facade, kMaxFps);
    const LiveConfig kept(*store, kMaxFps);
    kMaxFps.Set(*store, 15);
    std::latch begin(2);
    std::thread ends([&] {
      begin.arrive_and_wait();
      ofStore.reset();
      ofFacade.reset();
    });
    begin.arrive_and_wait();
    store.reset();
    facade.reset();
    ends.join();
    ASSERT_EQ(15, kept.Get());
  }
}

// Callbacks of several threads make, end and read it, beside sets of other names of the group.
TEST_F(LiveThreads, EndItInsideCallbacksBesideOtherSetters) {
  std::atomic<int> faults{0};
  const Subscription subscription(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                                  [&](const KalConfigEvent& event) {
                                    const LiveConfig maxFps(*m_call, kMaxFps);
                                    if (maxFps.Get() < event.m_newValue.ToInt())
                                      ++faults;  // one setter, counting up
                                  });
  std::thread other([&] {
    for (int i = 0; i < 2000; ++i) kStamp.Set(*m_call, long{i});
  });
  for (int value = 31; value < 2000; ++value) kMaxFps.Set(*m_call, value);
  other.join();
  EXPECT_EQ(0, faults);
}
