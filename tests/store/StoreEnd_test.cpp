// SPDX-License-Identifier: Apache-2.0
// A store that ends while its callbacks, or what they captured, still use it.

#include <array>
#include <cstddef>
#include <cstring>
#include <list>
#include <new>

#include "StoreFixture.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/LiveConfig.h"
#include "tessel/Subscription.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kAudio = KAL_CONFIG_GROUP_AUDIO;
constexpr KalConfigGroup kVideo = KAL_CONFIG_GROUP_VIDEO;

/// Runs a function when the last callback that captured it ends.
std::shared_ptr<void> AtEnd(std::function<void()> function) {
  return {new int, [function = std::move(function)](const int* token) {
            delete token;
            function();
          }};
}

fnConfigChangedCallBack Holding(std::shared_ptr<void> captured) {
  return [captured = std::move(captured)](const KalConfigEvent&) {};
}

TEST(StoreEnd, MayEndASubscriptionThatACallbackOwns) {
  KalConfig other(6);
  auto store = std::make_unique<KalConfig>(5);
  int notified = 0;
  const auto count = [&](const KalConfigEvent&) { ++notified; };
  auto owned = std::make_shared<Subscription>(*store, kVideo, "owned", count);
  auto elsewhere = std::make_shared<Subscription>(other, kVideo, "elsewhere", count);
  for (const KalConfigGroup group : {kAudio, kVideo}) {
    for (const char* name : {"a", "b", "owned"}) {
      store->SubscribeConfig(group, name, [owned, elsewhere](const KalConfigEvent&) {}, nullptr, false);
    }
  }
  owned.reset();
  elsewhere.reset();
  store.reset();
  EXPECT_EQ(kResultNobody, other.SetKalConfig(kVideo, "elsewhere", "1", false, false));
  EXPECT_EQ(0, notified);
}

TEST(StoreEnd, AnswersWhatCallbacksCaptured) {
  auto store = std::make_unique<KalConfig>(5);
  KalConfig& it = *store;
  it.SetKalConfig(kAudio, "value", "1", false, false);
  Recorder recorder;
  auto captured = std::make_shared<int>(1);
  int ends = 0;
  SubscribeId_t id = 0;
  id = it.SubscribeConfig(
      kAudio, "name", Holding(AtEnd([&] {
        ++ends;
        ConfigData value;
        EXPECT_EQ(kResultNotFound, it.UnsubscribeConfig(id));
        EXPECT_EQ(kResultOk, it.GetKalConfig(kAudio, "value", value));
        EXPECT_EQ(kResultNobody, it.SetKalConfig(kAudio, "name", "2", false, false));
        EXPECT_EQ(kResultNobody, it.GetDynamicConfig(kAudio, "bound", value, {}));
        EXPECT_STREQ(R"({"Audio":[{"key":"name","value":"2"},{"key":"value","value":"1"}]})",
                     it.DumpKalConfigs(1U << kAudio));
        EXPECT_EQ(kResultOk, it.RemoveKalConfig(kAudio, "value"));
        EXPECT_EQ(kResultOk, it.ApplyKalConfigs(R"({"Audio":[{"key":"name","value":"3"}]})"));
        EXPECT_EQ(kResultOk, it.RemoveKalConfigByGroup(kAudio));
        it.SubscribeConfig(kVideo, "late", [captured](const KalConfigEvent&) {}, nullptr, false);
        it.BindConfig(kVideo, "late", [captured](const KalConfigEvent&) { return ConfigValue(); });
        EXPECT_EQ(kResultOk, it.SetKalConfig(kVideo, "late", "1", false, false));
      })),
      nullptr, false);
  it.SubscribeConfig(kAudio, "name", recorder.Callback(), nullptr, false);
  it.BindConfig(kAudio, "bound", [](const KalConfigEvent&) { return ConfigValue("bound"); });
  store.reset();
  EXPECT_EQ(1, ends);
  EXPECT_EQ(0U, recorder.Count());
  EXPECT_EQ(1, captured.use_count());
}

/// A store in memory of its own, which is overwritten once the store has ended.
class StoreEndInside : public ::testing::TestWithParam<int> {
 protected:
  StoreEndInside() { m_store = new (m_memory) KalConfig(5); }
  ~StoreEndInside() override {
    if (m_store != nullptr) End();
  }

  void End() {
    std::exchange(m_store, nullptr)->~KalConfig();
    std::memset(m_memory, 0xA5, sizeof m_memory);
  }
  std::string Suffix() const { return " [cid=5]" + ThisText(m_memory); }

  alignas(KalConfig) std::byte m_memory[sizeof(KalConfig)];
  KalConfig* m_store = nullptr;
  const TraceLog m_log{GetParam()};
};

TEST_P(StoreEndInside, ASetNotifiesTheOthersAndReturns) {
  Recorder recorder;
  auto captured = std::make_shared<int>(1);
  m_store->SubscribeConfig(kAudio, "name", recorder.Callback(), nullptr, false);
  m_store->SubscribeConfig(
      kAudio, "name", [this, captured](const KalConfigEvent&) { End(); }, nullptr, false);
  m_store->SubscribeConfig(kAudio, "name", recorder.Callback(), nullptr, false);
  EXPECT_EQ(kResultOk, m_store->SetKalConfig(kAudio, "name", "1", false, false));
  EXPECT_EQ(2U, recorder.Count());
  EXPECT_EQ(1, captured.use_count());
  EXPECT_EQ(GetParam() < 2 ? 0U : 1U,
            m_log.Count("kalStore::KalConfig::fireEvents, nObservers=3" + Suffix()));
}

TEST_P(StoreEndInside, ASetLetsAnExceptionThrough) {
  Recorder recorder;
  m_store->SubscribeConfig(
      kAudio, "name",
      [this](const KalConfigEvent&) {
        End();
        throw std::runtime_error("ended");
      },
      nullptr, false);
  m_store->SubscribeConfig(kAudio, "name", recorder.Callback(), nullptr, false);
  EXPECT_THROW(m_store->SetKalConfig(kAudio, "name", "1", false, false), std::runtime_error);
  EXPECT_EQ(1U, recorder.Count());
}

TEST_P(StoreEndInside, ARecursiveSetReturns) {
  Recorder recorder;
  m_store->SubscribeConfig(
      kAudio, "name",
      [&](const KalConfigEvent& event) {
        recorder.Add(event);
        if (m_store == nullptr) return;
        if (event.m_newValue.ToInt() == 3) return End();
        EXPECT_EQ(kResultOk,
                  m_store->SetKalConfig(kAudio, "name", event.m_newValue.ToInt() + 1, false, false));
      },
      nullptr, false);
  EXPECT_EQ(kResultOk, m_store->SetKalConfig(kAudio, "name", 1, false, false));
  EXPECT_EQ(3U, recorder.Count());
}

TEST_P(StoreEndInside, AReadOfABoundNameReturnsTheValue) {
  m_store->BindConfig(kAudio, "name", [this](const KalConfigEvent&) {
    End();
    return ConfigValue("last");
  });
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store->GetDynamicConfig(kAudio, "name", value, {}));
  EXPECT_STREQ("last", value.ToCstr());
}

TEST_P(StoreEndInside, ASubscribeReturnsItsId) {
  m_store->SetKalConfig(kAudio, "name", "1", false, false);
  EXPECT_EQ(
      1U, m_store->SubscribeConfig(kAudio, "name", [this](const KalConfigEvent&) { End(); }, nullptr, false));
  EXPECT_EQ(nullptr, m_store);
}

TEST_P(StoreEndInside, ASubscribeLetsAnExceptionThrough) {
  m_store->SetKalConfig(kAudio, "name", "1", false, false);
  EXPECT_THROW(m_store->SubscribeConfig(
                   kAudio, "name",
                   [this](const KalConfigEvent&) {
                     End();
                     throw 7;  // No exception of the library's own.
                   },
                   nullptr, false),
               int);
}

TEST_P(StoreEndInside, ARemovalReturns) {
  const SubscribeId_t id =
      m_store->SubscribeConfig(kAudio, "name", Holding(AtEnd([this] { End(); })), nullptr, false);
  EXPECT_EQ(kResultOk, m_store->UnsubscribeConfig(id));
  EXPECT_EQ(nullptr, m_store);
}

TEST_P(StoreEndInside, ADeliveryThatWasHandedOverReturns) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  m_store->SubscribeConfig(kAudio, "name", [this](const KalConfigEvent&) { End(); }, &thread, false);
  EXPECT_EQ(kResultOk, m_store->SetKalConfig(kAudio, "name", "1", false, false));
  EXPECT_EQ(nullptr, m_store);
}

INSTANTIATE_TEST_SUITE_P(Masks, StoreEndInside, ::testing::Values(-1, 0, 1, 2));

/// Two calls whose callbacks own a facade of the other's call, and one of their own.
void MakeCallsThatHoldEachOther(int& ends) {
  for (const std::uint32_t callId : {1U, 2U}) {
    IKalConfig* store = nullptr;
    CreateKalConfig(callId, &store);
    for (const std::uint32_t held : {1U, 2U}) {
      const auto facade = std::make_shared<KalConfigHelper>(held);
      facade->SubscribeConfig("own", [](const KalConfigEvent&) {}, kAudio);
      store->SubscribeConfig(
          kAudio, "name", [facade, end = AtEnd([&ends] { ++ends; })](const KalConfigEvent&) {}, nullptr,
          false);
    }
    ReleaseKalConfig(store);
  }
}

TEST(StoreEnd, OfEveryCallEndsFacadesThatTheirCallbacksOwn) {
  DestroyKalConfig();
  int ends = 0;
  MakeCallsThatHoldEachOther(ends);
  EXPECT_EQ(2U, GetKalConfigSizeForUT());
  DestroyKalConfig();
  EXPECT_EQ(4, ends);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST(StoreEnd, OfEveryCallTakesStoresAlongThatItsCallbacksCreate) {
  DestroyKalConfig();
  IKalConfig* store = nullptr;
  CreateKalConfig(1, &store);
  store->SubscribeConfig(kAudio, "name", Holding(AtEnd([] {
                           ConfigData value;
                           GetKalConfigValueEx(kAudio, "name", value, 9);
                         })),
                         nullptr, false);
  DestroyKalConfig();
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

/// Three calls with a value each. What a callback of one holds uses all of them when it ends, and subscribes
/// with another one what does the same.
class StoreEndOfThree : public ::testing::TestWithParam<int> {
 protected:
  StoreEndOfThree() {
    DestroyKalConfig();
    for (std::size_t i = 0; i < m_stores.size(); ++i) {
      CreateKalConfig(static_cast<std::uint32_t>(i), &m_stores[i]);
      m_stores[i]->SetKalConfig(kAudio, "value", kValue, false, false);
    }
  }

  void Hold(int endsLeft, const std::function<void(IKalConfig&)>& use) {
    const auto at = static_cast<std::size_t>(endsLeft * GetParam()) % m_stores.size();
    m_stores[at]->SubscribeConfig(kAudio, "name", Holding(AtEnd([this, endsLeft, use] {
                                    ++m_ends;
                                    for (IKalConfig* store : m_stores) use(*store);
                                    if (endsLeft > 1) Hold(endsLeft - 1, use);
                                  })),
                                  nullptr, false);
  }

  static constexpr int kEnds = 20;
  static constexpr int kValue = 15;
  std::array<IKalConfig*, 3> m_stores{};
  int m_ends = 0;
};

TEST_P(StoreEndOfThree, AnswersWhatEndsHoweverLateAndWhereverItWasHeld) {
  Hold(kEnds, [](IKalConfig& store) {
    ConfigData value;
    EXPECT_EQ(kResultOk, store.GetKalConfig(kAudio, "value", value));
    EXPECT_EQ(kValue, value.ToInt());
  });
  DestroyKalConfig();
  EXPECT_EQ(kEnds, m_ends);
}

TEST_P(StoreEndOfThree, LeavesNoLiveValueThatStillFollowsAStore) {
  constexpr ConfigKey<int> kKey{kAudio, "value", 0};
  std::list<LiveConfig<int>> made;
  Hold(kEnds, [&](IKalConfig& store) { made.emplace_back(store, kKey); });
  DestroyKalConfig();
  EXPECT_EQ(3U * kEnds, made.size());
  for (const LiveConfig<int>& live : made) EXPECT_EQ(kValue, live.Get());
}

INSTANTIATE_TEST_SUITE_P(UpAndDown, StoreEndOfThree, ::testing::Values(1, 2));

[[noreturn]] void ExitWithCallsThatHoldEachOther() {
  static int ends = 0;
  MakeCallsThatHoldEachOther(ends);
  IKalConfig* store = nullptr;
  CreateKalConfig(3, &store);
  store->SubscribeConfig(kAudio, "name", Holding(AtEnd([] { std::fputs("ended", stderr); })), nullptr, false);
  std::exit(0);
}

/// Subscribes with the other call when it ends with one, and so on for ever.
void HoldForEver(std::uint32_t callId, std::array<IKalConfig*, 2>& stores) {
  stores[callId]->SubscribeConfig(
      kAudio, "name", Holding(AtEnd([callId, &stores] { HoldForEver(1 - callId, stores); })), nullptr, false);
}

[[noreturn]] void ExitWithWhatSubscribesForEver() {
  static std::array<IKalConfig*, 2> stores{};
  CreateKalConfig(0, &stores[0]);
  CreateKalConfig(1, &stores[1]);
  HoldForEver(0, stores);
  std::exit(0);
}

[[noreturn]] void ExitWithTwoCalls() {
  for (const std::uint32_t callId : {5U, 7U}) {
    IKalConfig* store = nullptr;
    CreateKalConfig(callId, &store);
  }
  set_external_trace_mask(2);
  std::exit(0);
}

TEST(StoreEndDeathTest, AtExitTracesTheEndOfEachStoreTheHighestFirst) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithTwoCalls(), ::testing::ExitedWithCode(0), "~KalConfig .cid=7.*~KalConfig .cid=5");
}

TEST(StoreEndDeathTest, AtExitLeavesWhatSubscribesInAStoreThatHasEnded) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithWhatSubscribesForEver(), ::testing::ExitedWithCode(0), "");
}

TEST(StoreEndDeathTest, AtExitEndsFacadesThatCallbacksOwn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithCallsThatHoldEachOther(), ::testing::ExitedWithCode(0), "ended");
}

}  // namespace
}  // namespace kalStore
