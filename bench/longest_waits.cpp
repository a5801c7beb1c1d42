// SPDX-License-Identifier: Apache-2.0
// How long a thread waits for another one that works on 500,000 settings: the longest of many short
// operations meanwhile, in the best of some rounds. Other programs hold up real-time threads (chrt -f 5)
// least.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>

#include "tessel/inspect.h"
#include "tessel/tessel.h"

using namespace kalStore;

namespace {

constexpr int kSettings = 500000;
constexpr int kRounds = 3;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;

using Milliseconds = std::chrono::duration<double, std::milli>;
using Clock = std::chrono::steady_clock;

IKalConfig* MakeLargeStore() {
  IKalConfig* store = nullptr;
  CreateKalConfig(7, &store);
  for (int i = 0; i < kSettings; ++i) {
    store->SetKalConfig(kGroup, ("Setting" + std::to_string(i)).c_str(), i, false, false);
  }
  return store;
}

void Read(IKalConfig& store) {
  ConfigData value;
  store.GetKalConfig(kGroup, "Setting7", value);
}

void MakeAndEndACall(IKalConfig&) {
  IKalConfig* store = nullptr;
  CreateKalConfig(8, &store);
  CleanUpKalConfig(8);
  ReleaseKalConfig(store);
}

struct Row {
  const char* waits;
  void (*operation)(IKalConfig&);
  const char* works;
  void (*work)(IKalConfig&);
};

constexpr Row kRows[] = {
    {"a read", &Read, "an export of the same group",
     [](IKalConfig& store) { store.DumpKalConfigs(1U << kGroup); }},
    {"a read", &Read, "a look at the same call's settings", [](IKalConfig&) { InspectSettings(7); }},
    {"a read", &Read, "the removal of the group",
     [](IKalConfig& store) { store.RemoveKalConfigByGroup(kGroup); }},
    {"the making and end of a call", &MakeAndEndACall, "a look at another call's settings",
     [](IKalConfig&) { InspectSettings(7); }},
    {"the making and end of a call", &MakeAndEndACall, "the end of another call",
     [](IKalConfig& store) {
       CleanUpKalConfig(7);
       ReleaseKalConfig(&store);
     }},
};

/// The longest operation while another thread works, and how long that works.
std::pair<Milliseconds, Milliseconds> Measure(const Row& row) {
  IKalConfig* const store = MakeLargeStore();
  std::atomic<bool> isOver{false};
  std::atomic<bool> hasBegun{false};
  Milliseconds worked{};
  std::thread worker([&] {
    hasBegun = true;
    const Clock::time_point begin = Clock::now();
    row.work(*store);
    worked = Clock::now() - begin;
    isOver = true;
  });
  while (!hasBegun) std::this_thread::yield();
  Milliseconds longest{};
  do {
    const Clock::time_point begin = Clock::now();
    row.operation(*store);
    longest = std::max<Milliseconds>(longest, Clock::now() - begin);
  } while (!isOver);
  worker.join();
  DestroyKalConfig();
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
