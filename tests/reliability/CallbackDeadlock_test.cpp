// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Watchdog.h"
#include "support/TestClock.h"
#include "support/Way.h"
#include "tessel/tessel.h"
#include "util/util.h"

// What callbacks may do, in each of the ways they are called. A callback that removes a subscription whose
// delivery waits for that callback gives up after 3000 ms by design, which pass on a test's clock.

using namespace kalStore;
using std::chrono::milliseconds;

namespace {

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_VIDEO;
constexpr long kRemovalCeilingMs = 3000;

// A call of its own, whose subscriber of "watched" does one thing once.
struct Stage {
  const std::uint32_t call;
  ACmThread thread{"callbacks"};
  std::atomic<bool> hasSet{false};
  std::atomic<bool> isDone{false};
  KalConfigHelper facade{call};
  std::unique_ptr<KalConfigHelper> other = std::make_unique<KalConfigHelper>(call);
  std::unique_ptr<KalConfigHelper> follower = std::make_unique<KalConfigHelper>(call);
  IKalConfig* otherStore = nullptr;
  SubscribeId_t own = 0;
  SubscribeId_t later = 0;

  explicit Stage(std::uint32_t callId) : call(callId) {
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_EQ(CreateKalConfig(call + 1000, &otherStore), kResultOk);
    EXPECT_EQ(CleanUpKalConfig(call + 1000), kResultOk);
  }
  ~Stage() {
    thread.Stop();
    ReleaseKalConfig(otherStore);
    EXPECT_EQ(CleanUpKalConfig(call), kResultOk);
  }
};

struct Action {
  const char* name;
  void (*run)(Stage& stage);
  // How many removals give up when it is called directly or handed over: their delivery waits for it.
  int givesUp = 0;
};

void Ignore(const KalConfigEvent&) {}

const Action kActions[] = {
    {"sets the name it watches", [](Stage& stage) { stage.facade.SetKalConfig("watched", "again", kGroup); }},
    {"sets another name", [](Stage& stage) { stage.facade.SetKalConfig("quiet", 2, kGroup); }},
    {"announces without storing",
     [](Stage& stage) { stage.facade.SetKalConfig("quiet", 3, kGroup, true, true); }},
    {"reads", [](Stage& stage) { EXPECT_TRUE(stage.facade.GetKalConfig("watched", kGroup).IsValid()); }},
    {"reads a bound name",
     [](Stage& stage) { EXPECT_TRUE(stage.facade.GetDynamicConfig("bound", kGroup).IsValid()); }},
    {"removes values",
     [](Stage& stage) {
       stage.facade.RemoveKalConfig("watched", kGroup);
       stage.facade.RemoveKalConfigByGroup(kGroup);
     }},
    {"subscribes to the name it watches",
     [](Stage& stage) { EXPECT_NE(stage.other->SubscribeConfig("watched", &Ignore, kGroup), 0U); }},
    {"subscribes to another name and removes that",
     [](Stage& stage) {
       EXPECT_EQ(stage.facade.UnsubscribeConfig(stage.facade.SubscribeConfig("quiet", &Ignore, kGroup)),
                 kResultOk);
     }},
    {"removes itself", [](Stage& stage) { EXPECT_EQ(stage.facade.UnsubscribeConfig(stage.own), kResultOk); },
     1},
    {"removes itself by name",
     [](Stage& stage) { EXPECT_EQ(stage.facade.UnsubscribeConfig("watched", kGroup), kResultOk); }, 1},
    {"removes one that is notified after it",
     [](Stage& stage) {
       IKalConfig* store = nullptr;
       EXPECT_EQ(CreateKalConfig(stage.call, &store), kResultOk);
       EXPECT_EQ(store->UnsubscribeConfig(stage.later), kResultOk);
       EXPECT_EQ(ReleaseKalConfig(store), kResultOk);
     },
     1},
    {"removes one of another name",
     [](Stage& stage) { EXPECT_EQ(stage.other->UnsubscribeConfig("unrelated", kGroup), kResultOk); }},
    {"exports", [](Stage& stage) { EXPECT_NE(stage.facade.DumpKalConfigs(), nullptr); }},
    {"imports",
     [](Stage& stage) {
       EXPECT_EQ(stage.facade.ApplyKalConfigs(R"({"Video":[{"key":"quiet","value":"4"}]})"), kResultOk);
     }},
    {"binds",
     [](Stage& stage) {
       EXPECT_NE(
           stage.facade.BindConfig("quiet", [](const KalConfigEvent&) { return ConfigData(1); }, kGroup), 0U);
     }},
    {"removes a binding",
     [](Stage& stage) { EXPECT_EQ(stage.other->UnsubscribeConfig("bound", kGroup), kResultOk); }},
    {"gives the last reference of another store back",
     [](Stage& stage) { EXPECT_EQ(ReleaseKalConfig(std::exchange(stage.otherStore, nullptr)), kResultOk); }},
    {"binds a facade to its call", [](Stage& stage) { const KalConfigHelper facade(stage.call); }},
    {"destroys another facade", [](Stage& stage) { stage.other.reset(); }},
    {"destroys a facade that is notified after it", [](Stage& stage) { stage.follower.reset(); }, 1},
};

void Play(const Action& action, Way way, std::uint32_t call) {
  SCOPED_TRACE(action.name);
  {
    Stage stage(call);
    stage.other->SubscribeConfig("unrelated", &Ignore, kGroup);
    stage.other->BindConfig(
        "bound", [&](const KalConfigEvent&) { return stage.facade.GetKalConfig("watched", kGroup); }, kGroup);
    bool isFirst = true;
    stage.own = stage.facade.SubscribeConfig(
        "watched",
        [&](const KalConfigEvent&) {
          if (!std::exchange(isFirst, false)) return;
          // The setter's own deliveries end on a thread whose time does not count here.
          while (way == Way::kPosted && !stage.hasSet) std::this_thread::yield();
          const long startMs = TestClock::NowMs();
          action.run(stage);
          const int expected = way == Way::kPosted ? 0 : action.givesUp;
          EXPECT_EQ((TestClock::NowMs() - startMs) / kRemovalCeilingMs, expected);
          stage.isDone = true;
        },
        kGroup, way == Way::kDirect ? nullptr : &stage.thread, way == Way::kPosted);
    EXPECT_NE(stage.follower->SubscribeConfig("watched", &Ignore, kGroup), 0U);
    IKalConfig* store = nullptr;
    EXPECT_EQ(CreateKalConfig(call, &store), kResultOk);
    stage.later = store->SubscribeConfig(kGroup, "watched", &Ignore, nullptr, false);
    EXPECT_EQ(ReleaseKalConfig(store), kResultOk);

    EXPECT_EQ(stage.facade.SetKalConfig("watched", 1, kGroup), kResultOk);
    stage.hasSet = true;
    while (!stage.isDone) std::this_thread::sleep_for(milliseconds(1));

    std::thread([&] {
      stage.facade.SetKalConfig("afterwards", 1, kGroup);
      EXPECT_EQ(stage.facade.GetKalConfig("afterwards", kGroup).ToInt(), 1);
    }).join();
  }
}

TEST(CallbackDeadlock, WhateverACallbackDoesComesToAnEnd) {
  const Watchdog watchdog(kDeadlockLimit);
  const TestClock clock;
  set_external_trace_mask(-1);
  std::vector<std::thread> scenarios;
  std::uint32_t call = 100;
  for (const Action& action : kActions) {
    for (const Way way : kWays)
      scenarios.emplace_back([&action, way, own = call++] { Play(action, way, own); });
  }
  for (std::thread& scenario : scenarios) scenario.join();
  set_external_trace_mask(0);
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
}

TEST(CallbackDeadlock, ABindingMayUseTheStoreAndItsOwnName) {
  const Watchdog watchdog(kDeadlockLimit);
  KalConfig store(7);
  int depth = 0;
  store.BindConfig(kGroup, "bound", [&](const KalConfigEvent&) {
    ConfigData value(depth);
    if (++depth < 5) store.GetDynamicConfig(kGroup, "bound", value, {});
    store.SetKalConfig(kGroup, "bound", depth, false, false);
    store.DumpKalConfigs(kAllConfigGroups);
    store.UnsubscribeConfig(
        store.BindConfig(kGroup, "second", [](const KalConfigEvent&) { return ConfigData(); }));
    return value;
  });
  ConfigData value;
  EXPECT_EQ(store.GetDynamicConfig(kGroup, "bound", value, {}), kResultOk);
  EXPECT_EQ(value.ToInt(), 4);
}

// Each callback destroys the facade of the other while that one is running: both teardowns give up waiting.
TEST(CallbackDeadlock, TwoCallbacksMayDestroyEachOthersFacade) {
  const Watchdog watchdog(kDeadlockLimit);
  const TestClock clock;
  set_external_trace_mask(-1);
  constexpr std::uint32_t kCall = 90;
  std::unique_ptr<KalConfigHelper> facades[2];
  std::atomic<int> inside{0};
  for (int side = 0; side < 2; ++side) {
    facades[side] = std::make_unique<KalConfigHelper>(kCall);
    facades[side]->SubscribeConfig(
        std::to_string(side).c_str(),
        [&, side](const KalConfigEvent&) {
          ++inside;
          while (inside < 2) std::this_thread::yield();
          facades[1 - side].reset();
        },
        kGroup);
  }
  KalConfigHelper setter(kCall);
  std::thread beside([&] { setter.SetKalConfig("0", 1, kGroup); });
  setter.SetKalConfig("1", 1, kGroup);
  beside.join();
  EXPECT_EQ(facades[0], nullptr);
  EXPECT_EQ(facades[1], nullptr);
  EXPECT_EQ(setter.SetKalConfig("0", 2, kGroup), kResultNobody);
  EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
  set_external_trace_mask(0);
}

}  // namespace
