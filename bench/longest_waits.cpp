// SPDX-License-Identifier: Apache-2.0
// How long a thread waits for another one that works on 500,000 settings, live values or calls, or on 100,000
// subscriptions or statistics objects: the longest of many short operations meanwhile, in the best of some
// rounds. Other programs hold up real-time threads (chrt -f 5) least.

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tessel/inspect.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"

using namespace kalStore;

namespace {

constexpr int kMany = 500000;
constexpr int kObjects = 100000;
constexpr int kRounds = 3;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr ConfigKey<int> kFollowed{kGroup, "Followed", 0};

using Milliseconds = std::chrono::duration<double, std::milli>;
using Clock = std::chrono::steady_clock;

// What a round works on, but for call 7.
struct Stage {
  std::unique_ptr<KalConfigHelper> facade;
  std::vector<LiveConfig<int>> live;
  std::vector<CallStore> calls;
  std::vector<StatsRef<VideoStats>> statistics;
};

void MakeSettings(IKalConfig& store, Stage&) {
  for (int i = 0; i < kMany; ++i) {
    store.SetKalConfig(kGroup, ("Setting" + std::to_string(i)).c_str(), i, false, false);
  }
}

void MakeLiveValues(IKalConfig& store, Stage& stage) {
  for (int i = 0; i < kMany; ++i) stage.live.emplace_back(store, kFollowed);
}

void MakeWaitingLiveValues(IKalConfig&, Stage& stage) {
  stage.facade = std::make_unique<KalConfigHelper>();
  for (int i = 0; i < kMany; ++i) stage.live.emplace_back(*stage.facade, kFollowed);
}

void MakeRecords(IKalConfig&, Stage& stage) {
  stage.facade = std::make_unique<KalConfigHelper>();
  for (int i = 0; i < kObjects; ++i) {
    stage.facade->SubscribeConfig(("Setting" + std::to_string(i)).c_str(), [](const KalConfigEvent&) {},
                                  kGroup);
  }
}

void MakeSubscriptions(IKalConfig& store, Stage&) {
  for (int i = 0; i < kObjects; ++i) {
    store.SubscribeConfig(kGroup, "Watched", [](const KalConfigEvent&) {}, nullptr, false);
  }
}

void MakeCalls(IKalConfig&, Stage& stage) {
  for (int i = 0; i < kMany; ++i) stage.calls.emplace_back(100 + i, CallStore::kEndsCall);
}

void MakeStatistics(IKalConfig&, Stage& stage) {
  for (int i = 0; i < kObjects; ++i) stage.statistics.emplace_back(100 + i);
}

void Read(IKalConfig& store, Stage&) {
  ConfigData value;
  store.GetKalConfig(kGroup, "Setting7", value);
}

void Set(IKalConfig& store, Stage&) {
  store.SetKalConfig(kGroup, "Setting7", 1, true, false);
}

void MakeAndEndACall(IKalConfig&, Stage&) {
  const CallStore call(8, CallStore::kEndsCall);
}

void MakeAndEndALiveValue(IKalConfig&, Stage&) {
  static const CallStore other(9);
  const LiveConfig live(*other, kFollowed);
}

void MakeAndEndStatistics(IKalConfig&, Stage&) {
  const StatsRef<VideoStats> statistics(8);
}

void Subscribe(IKalConfig&, Stage& stage) {
  stage.facade->UnsubscribeConfig(
      stage.facade->SubscribeConfig("Other", [](const KalConfigEvent&) {}, kGroup));
}

void EndCall(IKalConfig& store, Stage&) {
  CleanUpKalConfig(7);
  ReleaseKalConfig(&store);
}

using Operation = void (*)(IKalConfig&, Stage&);

struct Row {
  const char* waits;
  Operation operation;
  const char* works;
  Operation prepare;
  Operation work;
};

constexpr Row kRows[] = {
    {"a read", &Read, "an export of the same group", &MakeSettings,
     [](IKalConfig& store, Stage&) { store.DumpKalConfigs(1U << kGroup); }},
    {"a read", &Read, "a look at the same call's settings", &MakeSettings,
     [](IKalConfig&, Stage&) { InspectSettings(7); }},
    {"a read", &Read, "the removal of the group", &MakeSettings,
     [](IKalConfig& store, Stage&) { store.RemoveKalConfigByGroup(kGroup); }},
    {"a read", &Read, "the removal of a group with live values", &MakeLiveValues,
     [](IKalConfig& store, Stage&) { store.RemoveKalConfigByGroup(kGroup); }},
    {"a read", &Read, "a set of a name with live values", &MakeLiveValues,
     [](IKalConfig& store, Stage&) { kFollowed.Set(store, 1); }},
    {"a set", &Set, "a set of a name with subscriptions", &MakeSubscriptions,
     [](IKalConfig& store, Stage&) { store.SetKalConfig(kGroup, "Watched", 1, false, false); }},
    {"a set", &Set, "one more subscription of that name", &MakeSubscriptions,
     [](IKalConfig& store, Stage&) {
       store.SubscribeConfig(kGroup, "Watched", [](const KalConfigEvent&) {}, nullptr, false);
     }},
    {"a set", &Set, "a look at the same call's subscriptions", &MakeSubscriptions,
     [](IKalConfig&, Stage&) { InspectSubscriptions(7); }},
    {"a live value's making", &MakeAndEndALiveValue, "the end of a call with live values", &MakeLiveValues,
     &EndCall},
    {"a live value's making", &MakeAndEndALiveValue, "the binding of a facade with live values",
     &MakeWaitingLiveValues, [](IKalConfig&, Stage& stage) { stage.facade->SetCallId(7); }},
    {"a live value's making", &MakeAndEndALiveValue, "the end of a facade with live values that wait",
     &MakeWaitingLiveValues, [](IKalConfig&, Stage& stage) { stage.facade.reset(); }},
    {"a live value's making", &MakeAndEndALiveValue, "the end of one that waits with others",
     &MakeWaitingLiveValues, [](IKalConfig&, Stage& stage) { stage.live.pop_back(); }},
    {"a facade's subscription", &Subscribe, "its binding with subscriptions", &MakeRecords,
     [](IKalConfig&, Stage& stage) { stage.facade->SetCallId(7); }},
    {"the making and end of a call", &MakeAndEndACall, "a look at another call's settings", &MakeSettings,
     [](IKalConfig&, Stage&) { InspectSettings(7); }},
    {"the making and end of a call", &MakeAndEndACall, "the end of another call", &MakeSettings, &EndCall},
    {"the making and end of a call", &MakeAndEndACall, "the end of a call with live values", &MakeLiveValues,
     &EndCall},
    {"the making and end of a call", &MakeAndEndACall, "a look at all calls", &MakeCalls,
     [](IKalConfig&, Stage&) { InspectCalls(); }},
    {"the making and end of a call", &MakeAndEndACall, "the end of one of many calls", &MakeCalls,
     [](IKalConfig&, Stage& stage) { stage.calls.pop_back(); }},
    {"the making and end of statistics", &MakeAndEndStatistics, "a look at all statistics", &MakeStatistics,
     [](IKalConfig&, Stage&) { InspectStatistics(); }},
};

/// Keeps the calling thread on one of the processors that it may use. Real-time threads on the same one would
/// not run beside each other.
void StayOn(int index) {
  static const cpu_set_t allowed = [] {
    cpu_set_t set;
    CPU_ZERO(&set);
    sched_getaffinity(0, sizeof set, &set);
    return set;
  }();
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (!CPU_ISSET(processor, &allowed) || index-- > 0) continue;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    pthread_setaffinity_np(pthread_self(), sizeof one, &one);
    return;
  }
}

/// The longest operation while another thread works, and how long that works.
std::pair<Milliseconds, Milliseconds> Measure(const Row& row) {
  IKalConfig* store = nullptr;
  CreateKalConfig(7, &store);
  Stage stage;
  row.prepare(*store, stage);
  StayOn(0);
  std::atomic<bool> isReady{false};
  std::atomic<bool> hasBegun{false};
  std::atomic<bool> isOver{false};
  Milliseconds worked{};
  std::thread worker([&] {
    StayOn(1);
    isReady = true;
    while (!hasBegun) std::this_thread::yield();
    const Clock::time_point begin = Clock::now();
    row.work(*store, stage);
    worked = Clock::now() - begin;
    isOver = true;
  });
  while (!isReady) std::this_thread::yield();
  Milliseconds longest{};
  do {
    const Clock::time_point begin = Clock::now();
    row.operation(*store, stage);
    longest = std::max<Milliseconds>(longest, Clock::now() - begin);
    hasBegun = true;
  } while (!isOver);
  worker.join();
  if (row.work != &EndCall) EndCall(*store, stage);
  return {longest, worked};
}

}  // namespace

int main() {
  for (const Row& row : kRows) {
    Milliseconds longest = Milliseconds::max();
    Milliseconds worked = Milliseconds::max();
    for (int round = 0; round < kRounds; ++round) {
      const auto [wait, work] = Measure(row);
      longest = std::min(longest, wait);
      worked = std::min(worked, work);
    }
    std::printf("%s waits %.1f ms for %s, which takes %.1f ms\n", row.waits, longest.count(), row.works,
                worked.count());
  }
}
