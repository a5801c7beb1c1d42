// SPDX-License-Identifier: Apache-2.0
// Many threads on one store, with accounting: each subscriber knows which sets must have notified it, and
// when it must not be notified any more. Meant for ThreadSanitizer above all.

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "StoreFixture.h"
#include "support/TestClock.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/json.h"

namespace kalStore {
namespace {

constexpr int kSetters = 3;
constexpr int kSets = 4000;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;

std::string NameOf(int setter) {
  return "setter " + std::to_string(setter);
}

/// Removals wait for as long as a delivery takes: a loaded machine makes none give up.
class Patience {
 public:
  Patience() { m_clock.OnPause(&LetOthersRun); }

 private:
  TestClock m_clock;
};

/// What one subscriber of one setter's name was notified of. The setter counts upward, so a subscriber that
/// is notified of every set sees consecutive numbers.
struct Account {
  std::mutex mutex;
  int first = 0;
  int last = 0;
  int notified = 0;
  int gaps = 0;
  int repeats = 0;
  int afterEnd = 0;
  bool hasEnded = false;

  void Add(const KalConfigEvent& event) {
    std::lock_guard lock(mutex);
    if (hasEnded) ++afterEnd;
    if (!event.m_oldValue.IsValid()) return;  // Initial: before or after the set's own.
    const int number = event.m_newValue.ToInt();
    if (notified == 0) {
      first = number;
    } else {
      if (number <= last) ++repeats;
      if (number > last + 1) ++gaps;
    }
    last = number;
    ++notified;
  }
  void End() {
    std::lock_guard lock(mutex);
    hasEnded = true;
  }
};

TEST(StoreStress, NotifiesPermanentSubscribersOfEverySetOnceAndInOrder) {
  const Patience patience;
  KalConfig store(5);
  ACmThread posting("posting");
  ACmThread handing("handing");
  ASSERT_EQ(0, posting.Start());
  ASSERT_EQ(0, handing.Start());
  std::vector<std::shared_ptr<Account>> accounts;
  std::vector<SubscribeId_t> ids;
  const auto subscribe = [&](const std::string& name, ACmThread* thread, bool async) {
    auto account = accounts.emplace_back(std::make_shared<Account>());
    ids.push_back(store.SubscribeConfig(
        kGroup, name.c_str(), [account](const KalConfigEvent& event) { account->Add(event); }, thread,
        async));
  };
  for (int setter = 0; setter < kSetters; ++setter) {
    store.SetKalConfig(kGroup, NameOf(setter).c_str(), 0, false, false);
    subscribe(NameOf(setter), nullptr, false);
    subscribe(NameOf(setter), &posting, true);
    subscribe(NameOf(setter), &handing, false);
  }

  std::atomic<bool> isOver{false};
  std::atomic<int> failures{0};
  std::vector<std::thread> comers;
  for (int comer = 0; comer < 2; ++comer) {
    comers.emplace_back([&, comer] {
      std::minstd_rand random(static_cast<unsigned int>(comer + 1));
      while (!isOver) {
        const std::string name = NameOf(static_cast<int>(random() % kSetters));
        ACmThread* const thread = random() % 2 == 0 ? nullptr : &handing;
        auto account = std::make_shared<Account>();
        const SubscribeId_t id = store.SubscribeConfig(
            kGroup, name.c_str(), [account](const KalConfigEvent& event) { account->Add(event); }, thread,
            false);
        if (random() % 2 == 0) std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
        if (store.UnsubscribeConfig(id) != kResultOk) ++failures;
        account->End();
        if (account.use_count() != 1) ++failures;  // The callback is gone, and what it captured with it.
        std::lock_guard lock(account->mutex);
        if (account->gaps != 0 || account->repeats != 0 || account->afterEnd != 0) ++failures;
      }
    });
  }
  std::vector<std::thread> setters;
  for (int setter = 0; setter < kSetters; ++setter) {
    setters.emplace_back([&, setter] {
      const std::string name = NameOf(setter);
      for (int number = 1; number <= kSets; ++number) {
        if (store.SetKalConfig(kGroup, name.c_str(), number, false, false) != kResultOk) ++failures;
      }
    });
  }
  for (std::thread& setter : setters) setter.join();
  isOver = true;
  for (std::thread& comer : comers) comer.join();
  for (const SubscribeId_t id : ids) EXPECT_EQ(kResultOk, store.UnsubscribeConfig(id));
  posting.Stop();

  EXPECT_EQ(0, failures);
  for (const auto& account : accounts) {
    EXPECT_EQ(1, account->first);
    EXPECT_EQ(kSets, account->last);
    EXPECT_EQ(kSets, account->notified);
    EXPECT_EQ(1, account.use_count());
  }
  for (int setter = 0; setter < kSetters; ++setter) {
    EXPECT_EQ(kResultNobody, store.SetKalConfig(kGroup, NameOf(setter).c_str(), "end", false, false));
  }
}

TEST(StoreStress, NotifiesOfEachSetOfSeveralSettersOnce) {
  const Patience patience;
  KalConfig store(5);
  ACmThread posting;
  ACmThread handing;
  ASSERT_EQ(0, posting.Start());
  ASSERT_EQ(0, handing.Start());
  struct Seen {
    std::mutex mutex;
    std::vector<int> times = std::vector<int>(kSetters * kSets);
    void Add(const KalConfigEvent& event) {
      std::lock_guard lock(mutex);
      ++times.at(static_cast<std::size_t>(event.m_newValue.ToInt()));
    }
  } seen[3];
  const auto subscribe = [&](int index, ACmThread* thread, bool async) {
    return store.SubscribeConfig(
        kGroup, "shared", [&, index](const KalConfigEvent& event) { seen[index].Add(event); }, thread, async);
  };
  const SubscribeId_t ids[] = {subscribe(0, nullptr, false), subscribe(1, &posting, true),
                               subscribe(2, &handing, false)};
  std::vector<std::thread> setters;
  for (int setter = 0; setter < kSetters; ++setter) {
    setters.emplace_back([&, setter] {
      for (int number = 0; number < kSets; ++number) {
        store.SetKalConfig(kGroup, "shared", setter * kSets + number, true, number % 2 == 0);
      }
    });
  }
  for (std::thread& setter : setters) setter.join();
  for (const SubscribeId_t id : ids) EXPECT_EQ(kResultOk, store.UnsubscribeConfig(id));
  posting.Stop();
  for (Seen& one : seen) {
    for (const int times : one.times) ASSERT_EQ(1, times);
  }
}

TEST(StoreStress, ToleratesRunThreadsThatStartAndStop) {
  const Patience patience;
  KalConfig store(5);
  ACmThread threads[2];
  std::vector<std::shared_ptr<Account>> accounts;
  std::vector<SubscribeId_t> ids;
  std::atomic<int> outside{0};
  std::atomic<bool> isRunning[2] = {};
  for (int setter = 0; setter < kSetters; ++setter) {
    for (int t = 0; t < 2; ++t) {
      for (const bool async : {false, true}) {
        auto account = accounts.emplace_back(std::make_shared<Account>());
        ids.push_back(store.SubscribeConfig(
            kGroup, NameOf(setter).c_str(),
            [account, t, &outside, &isRunning](const KalConfigEvent& event) {
              if (!isRunning[t]) ++outside;
              account->Add(event);
            },
            &threads[t], async));
      }
    }
  }
  std::atomic<bool> isOver{false};
  std::thread starter([&] {
    while (!isOver) {
      for (int t = 0; t < 2; ++t) {
        isRunning[t] = true;
        EXPECT_EQ(0, threads[t].Start());
      }
      std::this_thread::sleep_for(std::chrono::microseconds(300));
      for (int t = 0; t < 2; ++t) {
        EXPECT_EQ(0, threads[t].Stop());
        isRunning[t] = false;
      }
    }
  });
  std::atomic<int> failures{0};
  std::vector<std::thread> setters;
  for (int setter = 0; setter < kSetters; ++setter) {
    setters.emplace_back([&, setter] {
      for (int number = 1; number <= kSets; ++number) {
        if (store.SetKalConfig(kGroup, NameOf(setter).c_str(), number, false, false) != kResultOk) ++failures;
      }
    });
  }
  for (std::thread& setter : setters) setter.join();
  isOver = true;
  starter.join();
  for (const SubscribeId_t id : ids) EXPECT_EQ(kResultOk, store.UnsubscribeConfig(id));
  EXPECT_EQ(0, failures);
  EXPECT_EQ(0, outside);
  for (const auto& account : accounts) {
    EXPECT_EQ(0, account->repeats);
    EXPECT_LE(account->notified, kSets);
    EXPECT_EQ(1, account.use_count());  // Nothing is left in a queue.
  }
}

TEST(StoreStress, BindsOnceWhoeverTries) {
  const Patience patience;
  KalConfig store(5);
  std::atomic<int> bound{0};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) {
        auto isAlive = std::make_shared<std::atomic<bool>>(true);
        const SubscribeId_t id =
            store.BindConfig(kGroup, "name", [&failures, isAlive](const KalConfigEvent& event) {
              if (!*isAlive) ++failures;
              return event.m_defaultValue;
            });
        ConfigData value;
        const std::int32_t result = store.GetDynamicConfig(kGroup, "name", value, i);
        if (result == kResultOk ? value.ToInt(-1) != i : result != kResultNobody) ++failures;
        if (id == 0) continue;
        if (++bound != 1) ++failures;
        --bound;
        if (store.UnsubscribeConfig(id) != kResultOk) ++failures;
        *isAlive = false;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, failures);
}

TEST(StoreStress, DumpsAndAppliesWhileOthersSet) {
  KalConfig store(5);
  std::atomic<bool> isOver{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([&] {
      while (!isOver) EXPECT_NE(nullptr, store.DumpKalConfigs(kAllConfigGroups));
    });
  }
  threads.emplace_back([&] {
    for (int i = 0; !isOver; ++i) {
      const std::string text = R"({"Audio":[{"key":"a","value":")" + std::to_string(i) + R"("}]})";
      EXPECT_EQ(kResultOk, store.ApplyKalConfigs(text.c_str()));
    }
  });
  for (int i = 0; i < 2000; ++i) {
    store.SetKalConfig(kGroup, std::to_string(i % 50).c_str(), i, false, false);
    if (i % 100 == 0) store.RemoveKalConfigByGroup(kGroup);
  }
  isOver = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(json::ObjectVal, json::Deserialize(store.DumpKalConfigs(kAllConfigGroups)).GetType());
}

TEST(StoreStress, CountsReferencesUnderConcurrentCreateReleaseAndCleanUp) {
  DestroyKalConfig();
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      std::minstd_rand random(t + 1);
      for (int i = 0; i < 2000; ++i) {
        const std::uint32_t callId = random() % 4;
        IKalConfig* store = nullptr;
        if (CreateKalConfig(callId, &store) != kResultOk) ++failures;
        if (random() % 3 == 0) CleanUpKalConfig(callId);
        store->SetKalConfig(kGroup, "name", i, false, false);
        if (ReleaseKalConfig(store) != kResultOk) ++failures;
        if (GetKalConfigSizeForUT() > 4) ++failures;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, failures);
  for (std::uint32_t callId = 0; callId < 4; ++callId) CleanUpKalConfig(callId);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

}  // namespace
}  // namespace kalStore
