// SPDX-License-Identifier: Apache-2.0
// Facades come and go on several threads while others set the values that they watch.
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include "FacadeTest.h"
#include "support/TestClock.h"
#include "support/Way.h"

namespace kalStore {
namespace {

// What a callback uses: alive as long as its facade is.
struct Component {
  std::atomic<bool> isAlive{true};
  std::atomic<int> notified{0};
};

class TeardownTest : public FacadeTest, public testing::WithParamInterface<Way> {};

TEST_P(TeardownTest, ReachesNoUserCodeOfAFacadeThatIsGone) {
  constexpr int kRounds = 200;
  constexpr int kOwners = 2;
  constexpr int kSetters = 2;
  TestClock clock;  // Waits as long as it takes.
  clock.OnPause(LetOthersRun);
  std::atomic<bool> stop{false};
  std::atomic<int> tooLate{0};
  ACmThread worker("worker");
  ASSERT_EQ(worker.Start(), 0);

  std::vector<std::thread> threads;
  for (int i = 0; i < kSetters; ++i) {
    threads.emplace_back([&, i] {
      KalConfigHelper setter(kCall);
      for (int value = 0; !stop; ++value) {
        setter.SetKalConfig("shared", value * kSetters + i, kGroup);
        setter.SetKalConfig("other", value, kGroup, true);
        setter.GetDynamicConfig("bound", kGroup);
        // Bounds the queue: what is posted faster than it is run would only be waited for at the end.
        if (GetParam() == Way::kPosted) std::this_thread::yield();
      }
    });
  }
  for (int i = 0; i < kOwners; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < kRounds; ++round) {
        // On the heap and freed after the facade: a late callback would be a use after free.
        const auto component = std::make_unique<Component>();
        const auto callback = [&tooLate, component = component.get()](const KalConfigEvent&) {
          if (!component->isAlive) ++tooLate;
          ++component->notified;
        };
        std::optional<KalConfigHelper> facade(std::in_place);
        ACmThread* const thread = GetParam() == Way::kDirect ? nullptr : &worker;
        const bool isAsync = GetParam() == Way::kPosted;
        facade->SubscribeConfig("shared", callback, kGroup, thread, isAsync);
        facade->SetCallId(kCall);
        facade->SubscribeConfig("other", callback, kGroup, thread, isAsync);
        facade->BindConfig(
            "bound",
            [component = component.get()](const KalConfigEvent&) { return ConfigData(component->notified); },
            kGroup);
        if ((round + i) % 2 == 0) facade->UnsubscribeConfig("other", kGroup);
        facade.reset();
        component->isAlive = false;
      }
    });
  }
  for (int i = kSetters; i < kSetters + kOwners; ++i) threads[static_cast<std::size_t>(i)].join();
  stop = true;
  for (int i = 0; i < kSetters; ++i) threads[static_cast<std::size_t>(i)].join();
  EXPECT_EQ(worker.Stop(), 0);
  EXPECT_EQ(tooLate, 0);
  EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore) << "a facade kept its reference";
}

INSTANTIATE_TEST_SUITE_P(Deliveries, TeardownTest, testing::ValuesIn(kWays),
                         [](const auto& row) { return NameOf(row.param); });

}  // namespace
}  // namespace kalStore
