// SPDX-License-Identifier: Apache-2.0
// Processes that exit while other threads use the libraries, or are in code that never returns.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

#include "support/CallingSink.h"
#include "support/TestClock.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"
#include "util/util.h"

namespace kalStore {
namespace {

constexpr int kExited = 18;
constexpr KalConfigGroup kUsedGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr ConfigKey<int> kUsedName{kUsedGroup, "name", 0};

[[noreturn]] void Exit() {
  std::exit(kExited);  // NOLINT(concurrency-mt-unsafe): that is what is tested.
}

// Of the threads that go on while the process exits; null: there are none.
std::atomic<std::atomic<int>*> g_rounds{nullptr};

// Constructed before the registries, and so ended after what they hold has been: by then the threads have
// used what was in them for a while. A leak checker, which would come next, cannot see what they have at hand
// just then.
__attribute__((init_priority(101))) const struct AfterTheStores {
  ~AfterTheStores() {
    const std::atomic<int>* const rounds = g_rounds;
    if (rounds == nullptr) return;
    for (const int begin = *rounds; *rounds < begin + 100;) std::this_thread::yield();
    _exit(kExited);
  }
} g_afterTheStores;

// What is done after the end of all static objects; null: nothing.
void (*g_atTheVeryEnd)() = nullptr;

[[gnu::destructor]] void AfterTheStaticObjects() {
  if (g_atTheVeryEnd != nullptr) g_atTheVeryEnd();
}

[[noreturn]] void UseForEver(KalConfigHelper& facade, std::atomic<int>& rounds) {
  for (std::uint32_t round = 0;; ++round) {
    facade.SetKalConfig("name", round, kUsedGroup);
    facade.GetKalConfig("name", kUsedGroup);
    facade.DumpKalConfigs(1U << kUsedGroup);
    {
      const Subscription subscription(facade, kUsedGroup, "name", [](const KalConfigEvent&) {});
      const StatsRef<AudioStats> statistics(7);
      const KalConfigHelper other(round % 3);
    }
    ++rounds;
  }
}

void ExpectInDeathTest(bool condition) {
  if (!condition) std::abort();
}

TEST(ExitDeathTest, LetsOtherThreadsGoOnUntilTheProcessEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto exitBesideThreads = [] {
    static auto& rounds = *new std::atomic<int>(0);
    static auto& facade = *new KalConfigHelper(7);
    static auto& live = *new LiveConfig(facade, kUsedName);
    g_rounds = &rounds;
    for (int i = 0; i < 3; ++i) std::thread([] { UseForEver(facade, rounds); }).detach();
    while (rounds < 100) std::this_thread::yield();
    if (live.Get() < 0) std::abort();
    Exit();
  };
  EXPECT_EXIT(exitBesideThreads(), testing::ExitedWithCode(kExited), "");
}

TEST(ExitDeathTest, LeavesTheStatisticsToTheirHoldersAndKnowsThemNoMore) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto askAgain = [] {
    static void* entity = nullptr;
    for (int i = 0; i < 2; ++i) createTesselEntity(KAL_TESSEL_AUDIO, 7, &entity);
    g_atTheVeryEnd = [] {
      ExpectInDeathTest(static_cast<IKalAudioInfo*>(entity)->GetCallId() == 7);
      void* another = nullptr;
      createTesselEntity(KAL_TESSEL_AUDIO, 7, &another);
      ExpectInDeathTest(another != entity && releaseTesselEntity(KAL_TESSEL_AUDIO, 7, another) == 0);
      _exit(kExited + 1);
    };
    Exit();
  };
  EXPECT_EXIT(askAgain(), testing::ExitedWithCode(kExited + 1), "");
}

void WaitForEver() {
  std::promise<void>().get_future().wait();
}

/// Runs `use` on a thread that does not end, and returns when that has called its argument.
template <class Use>
void BeginForEver(Use use) {
  auto& hasBegun = *new std::promise<void>;
  std::thread([use, &hasBegun] {
    use([&hasBegun, isFirst = true]() mutable {
      if (!std::exchange(isFirst, false)) return;
      hasBegun.set_value();
      WaitForEver();
    });
  }).detach();
  hasBegun.get_future().wait();
}

TEST(CodeThatNeverReturnsDeathTest, InACallbackHoldsUpItsOwnThreadAlone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto use = [] {
    static const TestClock clock;
    {
      KalConfigHelper facade(7);
      static int notified = 0;
      facade.SubscribeConfig("other", [](const KalConfigEvent&) { ++notified; }, kUsedGroup);
      BeginForEver([&](auto stay) {
        facade.SubscribeConfig("name", [stay](const KalConfigEvent&) mutable { stay(); }, kUsedGroup);
        facade.BindConfig("bound", [](const KalConfigEvent&) { return ConfigValue(1); }, kUsedGroup);
        KalConfigHelper(7).SetKalConfig("name", 1, kUsedGroup);
      });
      ExpectInDeathTest(facade.SetKalConfig("name", 2, kUsedGroup) == kResultOk);
      ExpectInDeathTest(facade.SetKalConfig("other", 2, kUsedGroup) == kResultOk && notified == 1);
      ExpectInDeathTest(facade.GetKalConfig("name", kUsedGroup) == ConfigData(2));
      facade.DumpKalConfigs(kAllConfigGroups);
    }  // Its waits give up.
    CleanUpKalConfig(7);
    ExpectInDeathTest(clock.Yields() >= 50000);
    Exit();
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(kExited), "");
}

TEST(CodeThatNeverReturnsDeathTest, InABindingHoldsUpItsOwnThreadAlone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto use = [] {
    static const TestClock clock;
    static IKalConfig* store = nullptr;
    CreateKalConfig(7, &store);
    static SubscribeId_t id = 0;
    BeginForEver([](auto stay) {
      id = store->BindConfig(kUsedGroup, "bound", [stay](const KalConfigEvent&) mutable {
        stay();
        return ConfigValue(1);
      });
      ConfigData value;
      store->GetDynamicConfig(kUsedGroup, "bound", value, {});
    });
    ConfigData value;
    ExpectInDeathTest(store->GetDynamicConfig(kUsedGroup, "bound", value, {}) == kResultOk &&
                      value.ToInt() == 1);
    ExpectInDeathTest(store->UnsubscribeConfig(id) == kResultOk);
    ExpectInDeathTest(TestClock::NowMs() > 3000);
    ReleaseKalConfig(store);
    CleanUpKalConfig(7);
    Exit();
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(kExited), "");
}

TEST(CodeThatNeverReturnsDeathTest, InTheSinkHoldsUpItsOwnThreadAlone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto use = [] {
    static KalConfigHelper facade(7);
    BeginForEver([](auto stay) {
      new CallingSink("fireEvents, stuck", stay);
      facade.SetKalConfig("stuck", 1, kUsedGroup);
    });
    ExpectInDeathTest(facade.SetKalConfig("stuck", 2, kUsedGroup) == kResultNobody);
    ExpectInDeathTest(facade.GetKalConfig("stuck", kUsedGroup) == ConfigData(2));
    CleanUpKalConfig(7);
    Exit();
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(kExited), "");
}

}  // namespace
}  // namespace kalStore
