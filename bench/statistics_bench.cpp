// What does it cost to measure (a setter), to report (a whole block), and to share an object (create and
// release of a present key)? Each beside the least that the same work could cost:
//
//   statistics_bench --benchmark_repetitions=9 --benchmark_report_aggregates_only=true
//
//   Setter         a setter, through the interface
//                  against a virtual call that stores the same word (SetterPlainStore)
//   WholeBlock     GetTxMediaInfo() without reset, and ResettingRead with it, six layers in use
//                  against memcpy of 2064 bytes (ReadBlockMemcpy)
//   CreateRelease  create and release of a present key among N
//                  against two look-ups in a std::map, each under a recursive mutex and with an atomic count
//                  (CreateReleaseMapLookUp)
//
// One thread.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>

#include "tessel/CKalTessel.h"
#include "tessel/IKalVideoInfo.h"
#include "tessel/StatisticsBlocks.h"
#include "util/CCmMutexThread.h"

namespace {

using Key = std::pair<kalStore::KalTesselEntityType, std::uint32_t>;

constexpr std::uint32_t kCall = 1;

class Video {
 public:
  Video() { createTesselEntity(kalStore::KAL_TESSEL_VIDEO, kCall, &m_entity); }
  ~Video() { releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, kCall, m_entity); }
  Video(const Video&) = delete;
  Video& operator=(const Video&) = delete;
  kalStore::IKalVideoInfo* operator->() const { return static_cast<kalStore::IKalVideoInfo*>(m_entity); }

 private:
  void* m_entity = nullptr;
};

struct PlainStore {
  virtual ~PlainStore() = default;
  [[gnu::noinline]] virtual void Set(std::uint32_t value) { m_value = value; }
  std::uint32_t m_value = 0;
};

void Setter(benchmark::State& state) {
  const Video video;
  std::uint32_t value = 0;
  for (auto _ : state) video->UpdateVideoEncFrameCnt(++value);
}
BENCHMARK(Setter);

void SetterPlainStore(benchmark::State& state) {
  PlainStore object;
  PlainStore* store = &object;
  benchmark::DoNotOptimize(store);
  std::uint32_t value = 0;
  for (auto _ : state) {
    store->Set(++value);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(SetterPlainStore);

void ReadBlock(benchmark::State& state, bool reset) {
  const Video video;
  video->UpdateEncodeParam(kalStore::kVideoLayerCount, kal::KAL_VIDEO_CODEC_CODE_100);
  kalStore::st_KalVideoTxBlock block;
  for (auto _ : state) {
    video->GetTxMediaInfo(&block, reset);
    benchmark::DoNotOptimize(block);
  }
}
BENCHMARK_CAPTURE(ReadBlock, WholeBlock, false);
BENCHMARK_CAPTURE(ReadBlock, ResettingRead, true);

void ReadBlockMemcpy(benchmark::State& state) {
  kalStore::st_KalVideoTxBlock source{};
  kalStore::st_KalVideoTxBlock block;
  for (auto _ : state) {
    benchmark::DoNotOptimize(source);
    std::memcpy(&block, &source, sizeof block);
    benchmark::DoNotOptimize(block);
  }
}
BENCHMARK(ReadBlockMemcpy);

void CreateRelease(benchmark::State& state) {
  const auto keys = static_cast<std::uint32_t>(state.range(0));
  void* entity = nullptr;
  for (std::uint32_t call = 0; call < keys; ++call)
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, &entity);
  std::uint32_t call = 0;
  for (auto _ : state) {
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, &entity);
    releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, entity);
    call = (call + 1) % keys;
  }
  for (call = 0; call < keys; ++call) releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, entity);
}
BENCHMARK(CreateRelease)->Arg(4)->Arg(64);

void CreateReleaseMapLookUp(benchmark::State& state) {
  const auto keys = static_cast<std::uint32_t>(state.range(0));
  CCmMutexThreadRecursive mutex;
  std::map<Key, std::atomic<std::int64_t>> counters;
  for (std::uint32_t call = 0; call < keys; ++call) counters[{kalStore::KAL_TESSEL_VIDEO, call}] = 1;
  std::uint32_t call = 0;
  for (auto _ : state) {
    for (const int step : {1, -1}) {
      mutex.Lock();
      counters.find({kalStore::KAL_TESSEL_VIDEO, call})->second.fetch_add(step);
      mutex.UnLock();
    }
    call = (call + 1) % keys;
  }
}
BENCHMARK(CreateReleaseMapLookUp)->Arg(4)->Arg(64);

}  // namespace
