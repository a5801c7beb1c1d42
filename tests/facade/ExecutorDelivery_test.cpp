// SPDX-License-Identifier: Apache-2.0
#include "facade/ExecutorDelivery.h"

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "FacadeTest.h"
#include "support/AllocationCount.h"
#include "support/Gate.h"
#include "support/TestClock.h"
#include "tessel/post.h"
#include "tessel/typed.h"

namespace kalStore {
namespace {

constexpr ConfigKey<int> kValue{KAL_CONFIG_GROUP_AUDIO, "a", 0};

// What it is made of can be copied, and called with a task. Overloads depend on that.
using CallsOnce = decltype([owned = std::unique_ptr<int>()](const std::function<void()>& task) { task(); });
static_assert(std::is_constructible_v<ConfigExecutor, void (*)(std::function<void()>)>);
static_assert(!std::is_constructible_v<ConfigExecutor, int> &&
              !std::is_constructible_v<ConfigExecutor, CallsOnce>);

// An event loop that runs when the test says so, on the thread that says it.
class Loop {
 public:
  void Post(std::function<void()> task) {
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
  }
  bool RunOne() {
    std::function<void()> task;
    {
      const std::lock_guard lock(m_mutex);
      if (m_tasks.empty()) return false;
      task = std::move(m_tasks.front());
      m_tasks.pop_front();
    }
    task();
    return true;
  }
  int Run() {
    int count = 0;
    while (RunOne()) ++count;
    return count;
  }

 private:
  std::mutex m_mutex;
  std::deque<std::function<void()>> m_tasks;
};

enum class Of { kStore, kFacade };

class OnAnExecutor : public FacadeTest, public testing::WithParamInterface<Of> {
 protected:
  ConfigRef Store() { return GetParam() == Of::kStore ? ConfigRef(*m_call) : ConfigRef(m_facade); }

  auto PostToLoop() {
    return [loop = m_loop](std::function<void()> task) { loop->Post(std::move(task)); };
  }
  Subscription Collecting(ConfigExecutor executor) {
    return kValue.Subscribe(
        Store(), [this](const ConfigReading<int>& reading) { m_notified.push_back(reading.value); },
        std::move(executor));
  }

  TestClock m_clock;
  const TraceLog m_log{0};
  const CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  KalConfigHelper m_setter{kCall};
  const std::shared_ptr<Loop> m_loop = std::make_shared<Loop>();
  std::vector<int> m_notified;
};

TEST_P(OnAnExecutor, RunsTheInitialDeliveryAndEveryChangeInTheOrderOfPosting) {
  kValue.Set(m_setter, 1);
  const Subscription subscription = Collecting(PostToLoop());
  EXPECT_TRUE(subscription);
  kValue.Set(m_setter, 2);
  EXPECT_TRUE(kValue.Set(m_setter, 3).WasTold());
  EXPECT_TRUE(m_notified.empty());
  EXPECT_EQ(m_loop->Run(), 3);
  EXPECT_EQ(m_notified, (std::vector{1, 2, 3}));
}

TEST_P(OnAnExecutor, HasNoThreadToBePostedTo) {
  set_external_trace_mask(2);
  const Subscription subscription = Collecting(PostToLoop());
  EXPECT_EQ(m_log.Count(", pRunThread=0x0, bAsync=0"), 1U);
}

TEST_P(OnAnExecutor, DropsWhatWasPostedBeforeTheEnd) {
  Subscription subscription = Collecting(PostToLoop());
  kValue.Set(m_setter, 1);
  subscription.Remove();
  kValue.Set(m_setter, 2);
  EXPECT_EQ(m_loop->Run(), 1);
  EXPECT_TRUE(m_notified.empty());
  EXPECT_EQ(m_clock.Sleeps(), 0);
}

TEST_P(OnAnExecutor, WaitsForARunInProgressOnAnotherThread) {
  Gate begun, goOn;
  std::atomic<bool> hasEnded{false};
  Subscription subscription = kValue.Subscribe(
      Store(),
      [&](const auto&) {
        begun.Open();
        goOn.Wait();
        hasEnded = true;
      },
      PostToLoop());
  kValue.Set(m_setter, 1);
  std::thread loop([&] { m_loop->Run(); });
  begun.Wait();
  m_clock.OnPause([&] {
    goOn.Open();
    LetOthersRun();
  });
  subscription.Remove();
  EXPECT_TRUE(hasEnded);
  loop.join();
}

TEST_P(OnAnExecutor, WaitsForTheExecutorOnAnotherThread) {
  Gate begun, goOn;
  std::atomic<bool> hasEnded{false};
  Subscription subscription = Collecting([&](const std::function<void()>&) {
    begun.Open();
    goOn.Wait();
    hasEnded = true;
  });
  std::thread setter([&] { kValue.Set(m_setter, 1); });
  begun.Wait();
  m_clock.OnPause([&] {
    goOn.Open();
    LetOthersRun();
  });
  subscription.Remove();
  EXPECT_TRUE(hasEnded);
  goOn.Open();
  setter.join();
}

TEST_P(OnAnExecutor, WaitsForRunsOnSeveralThreadsAtOnce) {
  Gate goOn;
  std::atomic<int> begun{0}, ended{0};
  Subscription subscription = kValue.Subscribe(
      Store(),
      [&](const auto&) {
        ++begun;
        goOn.Wait();
        LetOthersRun();
        ++ended;
      },
      PostToLoop());
  for (int value = 1; value <= 3; ++value) kValue.Set(m_setter, value);
  std::vector<std::thread> pool;
  for (int i = 0; i < 3; ++i) pool.emplace_back([&] { m_loop->Run(); });
  while (begun < 3) LetOthersRun();
  m_clock.OnPause([&] {
    goOn.Open();
    LetOthersRun();
  });
  subscription.Remove();
  EXPECT_EQ(ended, 3);
  for (std::thread& thread : pool) thread.join();
}

TEST_P(OnAnExecutor, GivesUpAfterThreeSecondsInAll) {
  Gate begun, goOn;
  Subscription subscription = kValue.Subscribe(
      Store(),
      [&](const auto&) {
        begun.Open();
        goOn.Wait();
      },
      PostToLoop());
  kValue.Set(m_setter, 1);
  std::thread loop([&] { m_loop->Run(); });
  begun.Wait();
  subscription.Remove();
  EXPECT_EQ(m_clock.NowMs(), 3000);
  goOn.Open();
  loop.join();
}

TEST_P(OnAnExecutor, EndsInsideItsCallbackWithoutWaiting) {
  Subscription subscription;
  subscription = kValue.Subscribe(
      Store(),
      [&](const ConfigReading<int>& reading) {
        m_notified.push_back(reading.value);
        subscription.Remove();
      },
      PostToLoop());
  kValue.Set(m_setter, 1);
  kValue.Set(m_setter, 2);
  m_loop->Run();
  EXPECT_EQ(m_notified, std::vector{1});
  EXPECT_EQ(m_clock.Sleeps(), 0);
  EXPECT_EQ(kValue.Set(m_setter, 3).Code(), kResultNobody);
}

TEST_P(OnAnExecutor, EndsInsideAnotherTaskWithoutWaiting) {
  Subscription subscription = Collecting(PostToLoop());
  m_loop->Post([&] { subscription.Remove(); });
  kValue.Set(m_setter, 1);
  m_loop->Run();
  EXPECT_TRUE(m_notified.empty());
  EXPECT_EQ(m_clock.Sleeps(), 0);
}

TEST_P(OnAnExecutor, EndsWhereverTheCallbackOfAnExecutorThatRunsAtOnceSays) {
  Subscription subscription;
  subscription = kValue.Subscribe(
      Store(),
      [&](const ConfigReading<int>& reading) {
        m_notified.push_back(reading.value);
        if (reading.value == 2) subscription.Remove();
      },
      [](const std::function<void()>& task) { task(); });
  kValue.Set(m_setter, 1);
  EXPECT_TRUE(kValue.Set(m_setter, 2).WasTold());
  kValue.Set(m_setter, 3);
  EXPECT_EQ(m_notified, (std::vector{1, 2}));
  EXPECT_EQ(m_clock.Sleeps(), 0) << "the removal waited for itself";
}

// The removal inside the callback does not wait; what it ends may remove others, which waits as ever.
TEST_P(OnAnExecutor, LetsOnlyItsOwnRemovalGoUnwaited) {
  const auto other = std::make_shared<Subscription>(*m_call, KAL_CONFIG_GROUP_VIDEO, "b",
                                                    [](const KalConfigEvent&) { LetOthersRun(); });
  Subscription subscription;
  subscription = kValue.Subscribe(
      Store(),
      [&, other](const auto&) {
        subscription.Remove();
        other->Remove();
      },
      PostToLoop());
  Gate begun, goOn;
  std::atomic<bool> hasEnded{false};
  *other = Subscription(*m_call, KAL_CONFIG_GROUP_VIDEO, "b", [&](const KalConfigEvent&) {
    begun.Open();
    goOn.Wait();
    hasEnded = true;
  });
  kValue.Set(m_setter, 1);
  std::thread setter([&] { m_setter.SetKalConfig("b", 1, KAL_CONFIG_GROUP_VIDEO); });
  begun.Wait();
  m_clock.OnPause([&] {
    goOn.Open();
    LetOthersRun();
  });
  m_loop->Run();
  EXPECT_TRUE(hasEnded);
  setter.join();
}

TEST_P(OnAnExecutor, SetsBehindAnExecutorThatWaitsForTheRunThatEndsIt) {
  ACmThread thread;
  thread.Start();
  Subscription subscription;
  subscription = kValue.Subscribe(
      Store(),
      [&](const ConfigReading<int>& reading) {
        m_notified.push_back(reading.value);
        subscription.Remove();
      },
      [&](std::function<void()> task) { return Send(thread, std::move(task)) == 0; });
  EXPECT_TRUE(kValue.Set(m_setter, 1).WasTold());
  EXPECT_EQ(m_notified, std::vector{1});
  EXPECT_EQ(m_clock.Sleeps(), 0);
}

TEST_P(OnAnExecutor, MakesAnExecutorThatIsGoneSeenAndServesTheOthers) {
  int others = 0;
  const ConfigExecutor gone[] = {[](const std::function<void()>&) { return false; },
                                 [](const std::function<void()>&) { throw std::runtime_error("gone"); },
                                 std::function<void(std::function<void()>)>()};
  int value = 0;
  for (const ConfigExecutor& executor : gone) {
    const Subscription subscription = Collecting(executor);
    const Subscription other = kValue.Subscribe(*m_call, [&](const auto&) { ++others; });
    others = 0;
    const std::size_t before = m_log.Count(", a, The executor refused a delivery");
    EXPECT_TRUE(kValue.Set(m_setter, ++value).WasTold());
    EXPECT_EQ(others, 1);
    EXPECT_EQ(m_log.Count(", a, The executor refused a delivery"), before + 1);
  }
  EXPECT_TRUE(m_notified.empty());
  EXPECT_EQ(m_log.Count("dropped"), 0U) << "it is reported once";
}

TEST_P(OnAnExecutor, MakesADeliveryThatIsDroppedSeen) {
  Subscription subscription = Collecting([](const std::function<void()>&) {});
  kValue.Set(m_setter, 1);
  EXPECT_EQ(m_log.Count("kalStore::ConfigExecutor::Execute, a, The executor dropped a delivery"), 1U);

  subscription.Pause();
  kValue.Set(m_setter, 2);
  EXPECT_EQ(m_log.Count("dropped"), 1U);
}

TEST_P(OnAnExecutor, MayEndWithItsTasksOnceTheSubscriptionHasEnded) {
  {
    auto loop = std::make_shared<Loop>();
    Subscription subscription =
        Collecting([loop](std::function<void()> task) { loop->Post(std::move(task)); });
    kValue.Set(m_setter, 1);
    subscription.Remove();
    std::thread([loop = std::move(loop)]() mutable { loop.reset(); }).join();
  }
  EXPECT_TRUE(m_log.Lines().empty());
}

TEST_P(OnAnExecutor, LeavesNoTaskThatOwnsTheLoopInWhichItWaits) {
  std::weak_ptr<Loop> watch;
  {
    const auto loop = std::make_shared<Loop>();
    watch = loop;
    const Subscription subscription =
        Collecting([loop](std::function<void()> task) { loop->Post(std::move(task)); });
    kValue.Set(m_setter, 1);
  }
  EXPECT_TRUE(watch.expired());
}

TEST_P(OnAnExecutor, EndsWithTheExecutorThatOwnsIt) {
  struct Component {
    Loop loop;
    Subscription subscription;
  };
  const auto captured = std::make_shared<int>();
  {
    auto component = std::make_unique<Component>();
    component->subscription = kValue.Subscribe(
        Store(), [captured](const auto&) {},
        [loop = &component->loop](std::function<void()> task) { loop->Post(std::move(task)); });
    kValue.Set(m_setter, 1);
  }
  EXPECT_EQ(captured.use_count(), 1);
  EXPECT_EQ(kValue.Set(m_setter, 2).Code(), kResultNobody);
}

TEST_P(OnAnExecutor, EndsWithItsLastTaskWhenItsCallbackOwnsIt) {
  auto owner = std::make_shared<Subscription>();
  const std::weak_ptr<Subscription> watch = owner;
  *owner = kValue.Subscribe(Store(), [owner](const auto&) { owner->Remove(); }, PostToLoop());
  owner.reset();
  kValue.Set(m_setter, 1);
  EXPECT_FALSE(watch.expired());
  m_loop->Run();
  EXPECT_TRUE(watch.expired());
}

TEST_P(OnAnExecutor, NeverRunsWhatWasPostedOnceTheFacadeHasEnded) {
  if (GetParam() == Of::kStore) return;
  const auto watch = std::make_shared<int>();
  {
    auto facade = std::make_unique<KalConfigHelper>(kCall);
    const auto owner = std::make_shared<Subscription>();
    *owner = kValue.Subscribe(
        *facade, [this, owner, watch](const auto&) { m_notified.push_back(1); }, PostToLoop());
    kValue.Set(m_setter, 1);
    facade.reset();
  }
  m_loop->Run();
  EXPECT_TRUE(m_notified.empty());
  EXPECT_EQ(watch.use_count(), 1);
}

// The delivery is announced to it already, and the end gives up waiting for the callback that runs it.
TEST_P(OnAnExecutor, IsHandedNothingOnceTheFacadeHasEnded) {
  if (GetParam() == Of::kStore) return;
  auto facade = std::make_unique<KalConfigHelper>(kCall);
  const Subscription earlier = kValue.Subscribe(*m_call, [&](const auto&) { facade.reset(); });
  int handed = 0;
  const Subscription subscription =
      kValue.Subscribe(*facade, [](const auto&) {}, [&](const std::function<void()>&) { ++handed; });
  kValue.Set(m_setter, 1);
  EXPECT_EQ(facade, nullptr);
  EXPECT_EQ(handed, 0);
}

// The callback ends what is about to be registered: the thread that registers it is the one that runs it.
TEST_P(OnAnExecutor, EndsInsideItsInitialDeliveryWhileTheFacadeIsBound) {
  if (GetParam() == Of::kStore) return;
  kValue.Set(m_setter, 1);
  KalConfigHelper late;
  Subscription subscription;
  subscription = kValue.Subscribe(
      late,
      [&](const ConfigReading<int>& reading) {
        m_notified.push_back(reading.value);
        subscription.Remove();
      },
      [](const std::function<void()>& task) { task(); });
  late.SetCallId(kCall);
  EXPECT_EQ(m_notified, std::vector{1});
  EXPECT_EQ(m_clock.Sleeps(), 0) << "the removal waited for itself";
  EXPECT_EQ(kValue.Set(m_setter, 2).Code(), kResultNobody);
}

TEST_P(OnAnExecutor, EndsInsideItsCallbackWhileAnotherThreadRemovesItByName) {
  if (GetParam() == Of::kStore) return;
  Gate isRemoving;
  const std::thread::id loop = std::this_thread::get_id();
  m_clock.OnPause([&] {
    if (std::this_thread::get_id() == loop) return TestClock::PassMs(1);
    isRemoving.Open();
    LetOthersRun();
  });
  Subscription subscription;
  std::thread other;
  subscription = kValue.Subscribe(
      m_facade,
      [&](const auto&) {
        other = std::thread([&] { m_facade.UnsubscribeConfig(kValue.Name(), kValue.Group()); });
        isRemoving.Wait();
        subscription.Remove();
      },
      PostToLoop());
  kValue.Set(m_setter, 1);
  m_loop->Run();
  other.join();
  EXPECT_EQ(m_clock.NowMs(), 0);
}

// The facade is still in use when the store has let the executor go.
TEST_P(OnAnExecutor, EndsWithTheFacadeThatItsExecutorOwns) {
  struct Component {
    KalConfigHelper facade{kCall};
    Subscription subscription;
  };
  auto owner = std::make_shared<Component>();
  const std::weak_ptr<Component> watch = owner;
  std::size_t posted = 0;
  owner->subscription = kValue.Subscribe(
      GetParam() == Of::kStore ? Store() : ConfigRef(owner->facade), [](const auto&) {},
      [&posted, owner](const std::function<void()>&) { ++posted; });
  Component& component = *owner;
  owner = nullptr;
  component.subscription.Remove();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(kValue.Set(m_setter, 1).Code(), kResultNobody);
  EXPECT_EQ(posted, 0U);
}

TEST_P(OnAnExecutor, RunsToItsEndWhenItsTaskEndsMeanwhile) {
  std::function<void()> task;
  const auto captured = std::make_shared<int>();
  Subscription subscription;
  long usesInside = 0;
  subscription = kValue.Subscribe(
      Store(),
      [&, captured](const auto&) {
        const std::weak_ptr<int> watch = captured;
        subscription.Remove();
        task = nullptr;
        usesInside = watch.use_count();
      },
      [&](std::function<void()> posted) { task = std::move(posted); });
  kValue.Set(m_setter, 1);
  task();
  EXPECT_EQ(usesInside, 2) << "what the callback captured ended while it ran";
  EXPECT_EQ(captured.use_count(), 1);
}

TEST_P(OnAnExecutor, NeverRunsWhatWasPostedOnceTheStoreHasEnded) {
  if (GetParam() == Of::kFacade) return;
  auto owner = std::make_shared<Subscription>();
  const std::weak_ptr<Subscription> watch = owner;
  {
    const CallStore call(kCall + 1, CallStore::kEndsCall);
    *owner = kValue.Subscribe(
        *call,
        [this, owner](const auto&) {
          m_notified.push_back(1);
          owner->Remove();
        },
        PostToLoop());
    owner.reset();
    kValue.Set(*call, 1);
  }
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(m_loop->Run(), 1);
  EXPECT_TRUE(m_notified.empty());
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(m_log.Lines().empty());
}

TEST_P(OnAnExecutor, DropsChangesWhilePausedWhetherOrNotTheyWait) {
  Subscription subscription = Collecting(PostToLoop());
  kValue.Set(m_setter, 1);
  subscription.Pause();
  kValue.Set(m_setter, 2);
  subscription.Resume();
  m_loop->Run();
  EXPECT_EQ(m_notified, std::vector{1}) << "a change of the pause is dropped, one before it is not";
  kValue.Set(m_setter, 3);
  subscription.Pause();
  m_loop->Run();
  EXPECT_EQ(m_notified, std::vector{1}) << "nothing runs in a pause";
}

TEST_P(OnAnExecutor, RunsATaskThatIsCopiedAndRunTwiceOnce) {
  const Subscription subscription = Collecting([](const std::function<void()>& task) {
    const std::function<void()> copy = task;
    task();
    copy();
  });
  kValue.Set(m_setter, 1);
  EXPECT_EQ(m_notified, std::vector{1});
}

TEST_P(OnAnExecutor, PassesOnWhatItsCallbackThrows) {
  const Subscription posted =
      kValue.Subscribe(Store(), [](const auto&) { throw std::runtime_error("no"); }, PostToLoop());
  EXPECT_TRUE(kValue.Set(m_setter, 1).WasTold());
  EXPECT_THROW(m_loop->Run(), std::runtime_error);
  const Subscription atOnce = kValue.Subscribe(
      *m_call,
      [](const ConfigReading<int>& reading) {
        if (reading.value == 2) throw std::logic_error("no");
      },
      [](const std::function<void()>& task) { task(); });
  EXPECT_THROW(kValue.Set(m_setter, 2), std::logic_error);
  EXPECT_EQ(m_log.Count("refused"), 0U);
}

TEST_P(OnAnExecutor, IsMadeWholeOrNotAtAllWhenAnAllocationFails) {
  kValue.Set(m_setter, 1);
  for (std::size_t n = 1;; ++n) {
    const auto captured = std::make_shared<int>();
    bool isMade = false;
    FailAllocation nth(n);
    try {
      const Subscription subscription = kValue.Subscribe(Store(), [captured](const auto&) {}, PostToLoop());
      isMade = static_cast<bool>(subscription);
    } catch (const std::bad_alloc&) {
    }
    if (!nth.Fired()) break;
    m_loop->Run();
    EXPECT_EQ(captured.use_count(), 1) << n << ", " << isMade;
    EXPECT_EQ(kValue.Set(m_setter, 1, true).Code(), kResultNobody) << n;
  }
}

TEST_P(OnAnExecutor, LosesADeliveryButNothingElseWhenPostingFindsNoMemory) {
  const Subscription subscription = Collecting(PostToLoop());
  int stored = 0;
  for (std::size_t n = 1;; ++n) {
    FailAllocation nth(n);
    try {
      kValue.Set(m_setter, ++stored);
    } catch (const std::bad_alloc&) {
    }
    if (!nth.Fired()) break;
  }
  m_loop->Run();
  m_notified.clear();
  kValue.Set(m_setter, -1);
  m_loop->Run();
  EXPECT_EQ(m_notified, std::vector{-1});
}

TEST_P(OnAnExecutor, WaitsForAFacadeToBeBound) {
  if (GetParam() == Of::kStore) return;
  kValue.Set(m_setter, 1);
  KalConfigHelper late;
  const Subscription subscription = kValue.Subscribe(
      late, [this](const ConfigReading<int>& reading) { m_notified.push_back(reading.value); }, PostToLoop());
  EXPECT_EQ(m_loop->Run(), 0);
  late.SetCallId(kCall);
  EXPECT_TRUE(m_notified.empty());
  m_loop->Run();
  EXPECT_EQ(m_notified, std::vector{1});
}

TEST_P(OnAnExecutor, IsSilentOnceEndedAtAnyMomentWhileOthersSet) {
  m_clock.OnPause(LetOthersRun);
  std::atomic<bool> isDone{false};
  std::vector<std::thread> threads;
  for (int setter = 0; setter < 2; ++setter) {
    threads.emplace_back([&, setter] {
      KalConfigHelper facade(kCall);
      for (int value = setter; !isDone; value += 2) kValue.Set(facade, value);
    });
  }
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      while (!isDone) m_loop->RunOne();
    });
  }
  for (int i = 0; i < 300; ++i) {
    // What the callback uses ends with the scope: a late run would be a use after its end.
    const auto notified = std::make_unique<std::atomic<int>>(0);
    const Subscription subscription =
        kValue.Subscribe(Store(), [count = notified.get()](const auto&) { ++*count; }, PostToLoop());
    if (i % 3 != 0) std::this_thread::yield();
  }
  isDone = true;
  for (std::thread& thread : threads) thread.join();
}

INSTANTIATE_TEST_SUITE_P(Subscriptions, OnAnExecutor, testing::Values(Of::kStore, Of::kFacade),
                         [](const auto& row) {
                           return std::string(row.param == Of::kStore ? "OfAStore" : "OfAFacade");
                         });

}  // namespace
}  // namespace kalStore
