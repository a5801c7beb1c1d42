// SPDX-License-Identifier: Apache-2.0
// What do a toggle, a read without a facade, and the lives of a facade and of a store cost?
//
//   facade_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
// One thread runs; 100 settings in the group; nothing is traced.

#include <benchmark/benchmark.h>

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "support/Settings.h"

namespace {

using kalStore::KalConfigEvent;
using kalStore::KalConfigHelper;

constexpr const char* kName = "VideoSetting0042";

void Fill(Call& call) {
  for (const std::string& name : NamesOf(100)) {
    call.Store().SetKalConfig(kGroup, name.c_str(), "1", false, false);
  }
}

void ReadToggleThatNobodySet(benchmark::State& state) {
  const Call call;
  KalConfigHelper facade(call.Id());
  for (auto _ : state) {
    benchmark::DoNotOptimize(facade.IsFeatureToggleDefaultOn(kalStore::KAL_FT_EnableMusicDetection));
  }
}
BENCHMARK(ReadToggleThatNobodySet)->Name("ReadToggleThatNobodySet<Tessel>");

void ReadThroughStore(benchmark::State& state) {
  Call call;
  Fill(call);
  ConfigData value;
  for (auto _ : state) benchmark::DoNotOptimize(call.Store().GetKalConfig(kGroup, kName, value));
}
BENCHMARK(ReadThroughStore)->Name("ReadThroughStore<Tessel>");

void ReadByCallId(benchmark::State& state) {
  Call call;
  Fill(call);
  ConfigData value;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kalStore::GetKalConfigValueEx(kGroup, kName, value, call.Id()));
  }
}
BENCHMARK(ReadByCallId)->Name("ReadByCallId<Tessel>");

void FacadeLife(benchmark::State& state) {
  const Call call;
  const std::vector<std::string> names = NamesOf(state.range(0));
  for (auto _ : state) {
    KalConfigHelper facade(call.Id());
    for (const std::string& name : names) {
      facade.SubscribeConfig(name.c_str(), [](const KalConfigEvent&) {}, kGroup);
    }
  }
}
BENCHMARK(FacadeLife)->Name("FacadeLife<Tessel>")->ArgName("subscriptions")->Arg(0)->Arg(1)->Arg(10);

void StoreLife(benchmark::State& state) {
  constexpr std::uint32_t kId = 7;
  for (auto _ : state) {
    kalStore::IKalConfig* store = nullptr;
    kalStore::CreateKalConfig(kId, &store);
    kalStore::CleanUpKalConfig(kId);
    kalStore::ReleaseKalConfig(store);
  }
}
BENCHMARK(StoreLife)->Name("StoreLife<Tessel>");

/// What a store is made of: a map of values and one of subscriptions for each group, each with its lock.
void FloorLife(benchmark::State& state) {
  struct Map {
    std::recursive_mutex mutex;
    std::map<std::string, std::string, std::less<>> entries;
  };
  for (auto _ : state) {
    std::array<std::unique_ptr<Map>, 2 * std::size_t{kalStore::KAL_CONFIG_GROUP_LAST}> maps;
    for (auto& map : maps) map = std::make_unique<Map>();
    benchmark::DoNotOptimize(maps);
  }
}
BENCHMARK(FloorLife)->Name("StoreLife<Floor>");

}  // namespace
