// What does a read through the facade cost beside the store's own, and how long does a facade take to come
// and go?
//
//   facade_bench --benchmark_min_time=1
//
// One thread unless the name ends in /threads:N. Reads are of one short value in a group of 100; nobody
// traces.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "tessel/tessel.h"

namespace {

using namespace kalStore;

constexpr std::uint32_t kCall = 7;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr const char* kName = "Component.Setting.50";

void Fill(KalConfigHelper& facade) {
  for (int i = 0; i < 100; ++i) {
    facade.SetKalConfig(("Component.Setting." + std::to_string(i)).c_str(), i, kGroup);
  }
}

void StoreRead(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  Fill(facade);
  IKalConfig* store = nullptr;
  CreateKalConfig(kCall, &store);
  ConfigData value;
  for (auto _ : state) benchmark::DoNotOptimize(store->GetKalConfig(kGroup, kName, value));
  ReleaseKalConfig(store);
}
BENCHMARK(StoreRead)->Threads(1)->Threads(2);

void FacadeRead(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  Fill(facade);
  ConfigData value;
  for (auto _ : state) benchmark::DoNotOptimize(facade.GetKalConfig(kName, value, kGroup));
}
BENCHMARK(FacadeRead)->Threads(1)->Threads(2);

void FacadeReadByValue(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  facade.SetKalSessionType(kal::KAL_SESSION_AUDIO);
  Fill(facade);
  for (auto _ : state) benchmark::DoNotOptimize(facade.GetKalConfig(kName));
}
BENCHMARK(FacadeReadByValue);

void ToggleThatNobodySet(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  for (auto _ : state) {
    benchmark::DoNotOptimize(facade.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));
  }
}
BENCHMARK(ToggleThatNobodySet);

void ReadWithoutAFacade(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  Fill(facade);
  ConfigData value;
  for (auto _ : state) benchmark::DoNotOptimize(GetKalConfigValueEx(kGroup, kName, value, kCall));
}
BENCHMARK(ReadWithoutAFacade);

void FacadeLife(benchmark::State& state) {
  const KalConfigHelper keeper(kCall);
  const auto subscriptions = state.range(0);
  for (auto _ : state) {
    KalConfigHelper facade(kCall);
    for (std::int64_t i = 0; i < subscriptions; ++i) {
      facade.SubscribeConfig(("Watched." + std::to_string(i)).c_str(), [](const KalConfigEvent&) {}, kGroup);
    }
  }
}
BENCHMARK(FacadeLife)->Arg(0)->Arg(1)->Arg(10)->ArgName("subscriptions");

void SetWithOneSubscriber(benchmark::State& state) {
  KalConfigHelper facade(kCall);
  std::int64_t told = 0;
  facade.SubscribeConfig(
      kName, [&](const KalConfigEvent&) { ++told; }, kGroup);
  for (auto _ : state) benchmark::DoNotOptimize(facade.SetKalConfig(kName, 1, kGroup, true));
  state.counters["told"] = static_cast<double>(told);
}
BENCHMARK(SetWithOneSubscriber);

}  // namespace
