#include <chrono>
#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using Clock = std::chrono::steady_clock;

long MillisSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

class StoreRemoval : public StoreTest {
 protected:
  /// Checks what a removal that gave up leaves in the trace: reports about every 500 ms of the 3000.
  static void ExpectLongWait(const TraceLog& log, const std::string& line) {
    const std::vector<std::string> waits = log.Matching("Waiting for long time");
    EXPECT_GE(waits.size(), 4U);
    EXPECT_LE(waits.size(), 5U);
    for (const std::string& wait : waits) EXPECT_EQ(line, wait);
    EXPECT_EQ(waits.size(), log.CountLevel(1));
  }
};

TEST_F(StoreRemoval, EndsASubscription) {
  Recorder told;
  const SubscribeId_t id = Subscribe("name", told.Callback());
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(kResultNobody, Set("name", "1"));
  EXPECT_EQ(0U, told.Count());
}

TEST_F(StoreRemoval, LeavesTheOthersOfTheName) {
  Recorder told;
  const SubscribeId_t first = Subscribe("name", told.Callback());
  Subscribe("name", told.Callback());
  m_store.UnsubscribeConfig(first);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(1U, told.Count());
}

TEST_F(StoreRemoval, RefusesAnIdThatIsNotRegistered) {
  Recorder told;
  const SubscribeId_t id = Subscribe("name", told.Callback());
  m_store.UnsubscribeConfig(id);
  TraceLog log(0);
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(0));
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(18446744073709551615U));
  const std::string label = "kalStore::KalConfig::UnsubscribeConfig, ";
  EXPECT_THAT(log.Matching(""), ElementsAre(label + "1Failed" + Suffix(), label + "0Failed" + Suffix(),
                                            label + "18446744073709551615Failed" + Suffix()));
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, ReleasesWhatTheCallbackCaptured) {
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t first = Subscribe("name", [captured](const KalConfigEvent&) {});
  const SubscribeId_t second = Bind("name", [captured](const KalConfigEvent&) { return ConfigValue(); });
  EXPECT_EQ(3, captured.use_count());
  m_store.UnsubscribeConfig(first);
  EXPECT_EQ(2, captured.use_count());
  m_store.UnsubscribeConfig(second);
  EXPECT_EQ(1, captured.use_count());
}

TEST_F(StoreRemoval, DoesNotWaitWhenNothingIsInProgress) {
  Recorder told;
  const SubscribeId_t id = Subscribe("name", told.Callback());
  Set("name", "1");
  const Clock::time_point start = Clock::now();
  m_store.UnsubscribeConfig(id);
  EXPECT_LT(MillisSince(start), 500);
}

TEST_F(StoreRemoval, WaitsForADeliveryInProgressElsewhere) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = Subscribe("name", [&, captured](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = true;
  });
  TraceLog log(1);
  std::thread setter([&] { EXPECT_EQ(kResultOk, Set("name", "1")); });
  inside.Wait();
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    go.Open();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_TRUE(isDone);
  EXPECT_EQ(1, captured.use_count());
  setter.join();
  opener.join();
  EXPECT_EQ(
      1U,
      log.Count(
          "kalStore::KalConfig::unsubscribeConfig, Other thread remove itself when notification, name, "));
  EXPECT_EQ(1U, log.Count(", 1, " + std::to_string(GetThreadSelfId()) + Suffix()));
  EXPECT_EQ(1U, log.CountLevel(0));
}

TEST_F(StoreRemoval, WaitsForTheInitialDelivery) {
  Set("name", "1");
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  std::thread subscriber([&] {
    EXPECT_EQ(1U, Subscribe("name", [&](const KalConfigEvent&) {
                inside.Open();
                go.Wait();
                isDone = true;
              }));
  });
  inside.Wait();
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    go.Open();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(1));
  EXPECT_TRUE(isDone);
  subscriber.join();
  opener.join();
}

TEST_F(StoreRemoval, WaitsForABindingThatComputes) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  const SubscribeId_t id = Bind("name", [&](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = true;
    return ConfigValue("late");
  });
  std::thread reader([&] {
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", value, {}));
    EXPECT_STREQ("late", value.ToCstr());
  });
  inside.Wait();
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    go.Open();
  });
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_TRUE(isDone);
  reader.join();
  opener.join();
}

TEST_F(StoreRemoval, HappensOnceWhenSeveralThreadsTry) {
  for (int round = 0; round < 50; ++round) {
    Recorder told;
    const SubscribeId_t id = Subscribe("name", told.Callback());
    std::atomic<int> removed{0};
    const auto remove = [&] {
      if (m_store.UnsubscribeConfig(id) == kResultOk) ++removed;
    };
    std::thread first(remove);
    remove();
    first.join();
    EXPECT_EQ(1, removed);
  }
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, FromTheOwnCallbackGivesUpAfterThreeSecondsWhateverTheMockTime) {
  set_mock_time(0);
  int calls = 0;
  SubscribeId_t id = 0;
  TraceLog log(1);
  id = Subscribe("name", [&](const KalConfigEvent&) {
    ++calls;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    EXPECT_GE(MillisSince(start), 2999);
    EXPECT_LT(MillisSince(start), 3500);
  });
  EXPECT_EQ(kResultOk, Set("name", "1"));
  set_mock_time(~0UL);
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  EXPECT_EQ(1, calls);
  EXPECT_EQ(
      (std::vector<std::string>{
          "kalStore::KalConfig::unsubscribeConfig, Same thread remove itself when notification, name, " +
          std::to_string(GetThreadSelfId()) + ", 1" + Suffix()}),
      log.Matching("Same thread"));
  const std::string cost = log.Matching("cost=").at(0);
  EXPECT_THAT(cost, ::testing::StartsWith("kalStore::ConfigEventHandler::Notify, name, Audio, cost=30"));
  const std::vector<std::string> waits = log.Matching("Waiting");
  EXPECT_GE(waits.size(), 4U);
  EXPECT_LE(waits.size(), 5U);
  for (const std::string& wait : waits) {
    EXPECT_EQ("kalStore::KalConfig::unsubscribeConfig, name Waiting for long time..." + Suffix(), wait);
  }
  EXPECT_EQ(waits.size() + 1, log.CountLevel(1));
  EXPECT_EQ(1U, log.CountLevel(0));
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreRemoval, FromAHandedOverCallbackGivesUpWhileTheSetterWaits) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  SubscribeId_t id = 0;
  std::atomic<long> waited{0};
  TraceLog log(1);
  id = Subscribe(
      "name",
      [&](const KalConfigEvent&) {
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
        waited = MillisSince(start);
      },
      &thread, false);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_GE(waited, 2999);
  EXPECT_EQ(
      (std::vector<std::string>{
          "kalStore::KalConfig::unsubscribeConfig, Other thread remove itself when notification, name, " +
          std::to_string(GetThreadSelfId()) + ", 1, " + std::to_string(thread.GetThreadId()) + Suffix()}),
      log.Matching("remove itself"));
  EXPECT_EQ(kResultNobody, Set("name", "2"));
}

TEST_F(StoreRemoval, ThatGaveUpLeavesTheCallbackToItsDelivery) {
  Gate inside;
  Gate go;
  std::atomic<bool> isDone{false};
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id = Subscribe("name", [&, captured](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
    isDone = *captured == 1;
  });
  std::thread setter([&] { EXPECT_EQ(kResultOk, Set("name", "1")); });
  inside.Wait();
  TraceLog log(1);
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_GE(MillisSince(start), 2999);
  ExpectLongWait(log, "kalStore::KalConfig::unsubscribeConfig, name Waiting for long time..." + Suffix());
  EXPECT_FALSE(isDone);
  EXPECT_EQ(2, captured.use_count());
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
  go.Open();
  setter.join();
  EXPECT_TRUE(isDone);
  EXPECT_EQ(1, captured.use_count());
}

TEST_F(StoreRemoval, FromAPostedCallbackDoesNotWait) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  SubscribeId_t id = 0;
  std::atomic<int> calls{0};
  std::atomic<long> waited{0};
  TraceLog log(1);
  id = Subscribe(
      "name",
      [&](const KalConfigEvent&) {
        ++calls;
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
        waited = MillisSince(start);
      },
      &thread, true);
  Gate go;
  Post(thread, [&] { go.Wait(); });  // Until the set is over: a removal before that tells of the delivery.
  Set("name", "1");
  go.Open();
  thread.Stop();
  EXPECT_LT(waited, 500);
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  EXPECT_EQ(1, calls);
  EXPECT_EQ(0U, log.Count("remove itself"));
}

TEST_F(StoreRemoval, DoesNotStopWhatWasPostedBefore) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  Gate go;
  Post(thread, [&] { go.Wait(); });
  Recorder told;
  auto captured = std::make_shared<int>(1);
  const SubscribeId_t id =
      Subscribe("name", [&told, captured](const KalConfigEvent& event) { told.Add(event); }, &thread, true);
  Set("name", "1");
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_EQ(0U, told.Count());
  EXPECT_EQ(2, captured.use_count());  // The posted copy.
  go.Open();
  thread.Stop();
  EXPECT_THAT(told.Values(), ElementsAre("1"));
  EXPECT_EQ(1, captured.use_count());
}

}  // namespace
}  // namespace kalStore
