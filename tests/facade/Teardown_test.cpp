// Facades come and go on several threads while others set the values that they watch.
#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

#include "FacadeTest.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;

enum class Delivery { kDirect, kPosted, kHandedOver };

// What a callback uses: alive as long as its facade is.
struct Component {
  std::atomic<bool> isAlive{true};
  std::atomic<int> told{0};
};

class TeardownTest : public FacadeTest, public testing::WithParamInterface<Delivery> {};

TEST_P(TeardownTest, ReachesNoUserCodeOfAFacadeThatIsGone) {
  constexpr auto kDuration = std::chrono::milliseconds(600);
  constexpr int kOwners = 2;
  constexpr int kSetters = 2;
  const TraceLog log(0);
  std::atomic<bool> stop{false};
  std::atomic<int> rounds{0};
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
        if (GetParam() == Delivery::kPosted) std::this_thread::yield();
      }
    });
  }
  for (int i = 0; i < kOwners; ++i) {
    threads.emplace_back([&, i] {
      while (!stop) {
        // On the heap and freed after the facade: a late callback would be a use after free.
        const auto component = std::make_unique<Component>();
        const auto callback = [&tooLate, component = component.get()](const KalConfigEvent&) {
          if (!component->isAlive) ++tooLate;
          ++component->told;
        };
        std::optional<KalConfigHelper> facade(std::in_place);
        ACmThread* const thread = GetParam() == Delivery::kDirect ? nullptr : &worker;
        const bool isAsync = GetParam() == Delivery::kPosted;
        facade->SubscribeConfig("shared", callback, kGroup, thread, isAsync);
        facade->SetCallId(kCall);
        facade->SubscribeConfig("other", callback, kGroup, thread, isAsync);
        facade->BindConfig(
            "bound",
            [component = component.get()](const KalConfigEvent&) { return ConfigData(component->told); },
            kGroup);
        if ((rounds++ + i) % 2 == 0) facade->UnsubscribeConfig("other", kGroup);
        facade.reset();
        component->isAlive = false;
      }
    });
  }
  std::this_thread::sleep_for(kDuration);
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(worker.Stop(), 0);

  EXPECT_GT(rounds, 10);
  // A callback that is not scheduled for 50000 yields is given up on, with a line.
  EXPECT_LE(tooLate, static_cast<int>(log.Count("Clean() spin-wait")));
  EXPECT_EQ(CleanUpKalConfig(kCall), 0);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore) << "a facade kept its reference";
}

INSTANTIATE_TEST_SUITE_P(Deliveries, TeardownTest,
                         testing::Values(Delivery::kDirect, Delivery::kPosted, Delivery::kHandedOver),
                         [](const auto& row) {
                           switch (row.param) {
                             case Delivery::kDirect:
                               return "Direct";
                             case Delivery::kPosted:
                               return "Posted";
                             default:
                               return "HandedOver";
                           }
                         });

}  // namespace
}  // namespace kalStore
