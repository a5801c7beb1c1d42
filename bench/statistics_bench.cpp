// SPDX-License-Identifier: Apache-2.0
// What does it cost to measure (a setter), to report (a whole block), and to share an object (create and
// release of a present key)? Each is compared with the least that the same work could cost:
//
//   statistics_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
//   Setter         a setter, through the interface
//                  compared with a virtual call into a library that stores one word
//   ReadBlock      GetTxMediaInfo() without reset and with it, six layers in use
//                  compared with memcpy of the 2064 bytes
//   CreateRelease  create and release of a present key among N, in shuffled order
//                  compared with two look-ups in a std::map, each under a recursive mutex, and a counter
//
// One thread runs.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <numeric>
#include <utility>
#include <vector>

#include "support/Rotation.h"
#include "support/boundary.h"
#include "tessel/CKalTessel.h"
#include "tessel/IKalVideoInfo.h"
#include "tessel/StatisticsBlocks.h"

namespace {

constexpr std::uint32_t kCall = 1;

class Video {
 public:
  Video() { createTesselEntity(kalStore::KAL_TESSEL_VIDEO, kCall, &m_entity); }
  ~Video() { releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, kCall, m_entity); }
  Video(const Video&) = delete;
  Video& operator=(const Video&) = delete;
  kalStore::IKalVideoInfo& Info() const { return *static_cast<kalStore::IKalVideoInfo*>(m_entity); }

 private:
  void* m_entity = nullptr;
};

void Setter(benchmark::State& state) {
  const Video video;
  kalStore::IKalVideoInfo& info = video.Info();
  std::uint32_t value = 0;
  for (auto _ : state) info.UpdateVideoEncFrameCnt(++value);
}
BENCHMARK(Setter)->Name("Setter<Tessel>");

void SetterFloor(benchmark::State& state) {
  BoundaryWord& word = TheBoundaryWord();
  std::uint32_t value = 0;
  for (auto _ : state) word.Set(++value);
}
BENCHMARK(SetterFloor)->Name("Setter<Floor>");

void ReadBlock(benchmark::State& state, bool reset) {
  const Video video;
  video.Info().UpdateEncodeParam(kalStore::kVideoLayerCount, kal::KAL_VIDEO_CODEC_CODE_100);
  kalStore::st_KalVideoTxBlock block;
  for (auto _ : state) {
    video.Info().GetTxMediaInfo(&block, reset);
    benchmark::DoNotOptimize(block);
  }
}
BENCHMARK_CAPTURE(ReadBlock, Whole, false)->Name("ReadBlock<Tessel>");
BENCHMARK_CAPTURE(ReadBlock, Reset, true)->Name("ReadAndResetBlock<Tessel>");

void ReadBlockFloor(benchmark::State& state) {
  kalStore::st_KalVideoTxBlock source{};
  kalStore::st_KalVideoTxBlock block;
  for (auto _ : state) {
    benchmark::DoNotOptimize(source);
    std::memcpy(&block, &source, sizeof block);
    benchmark::DoNotOptimize(block);
  }
}
BENCHMARK(ReadBlockFloor)->Name("ReadBlock<Floor>");

using Key = std::pair<kalStore::KalTesselEntityType, std::uint32_t>;

Rotation<std::uint32_t> CallsOf(std::int64_t count) {
  std::vector<std::uint32_t> calls(static_cast<std::size_t>(count));
  std::iota(calls.begin(), calls.end(), 0);
  return Rotation(std::move(calls));
}

void CreateRelease(benchmark::State& state) {
  Rotation calls = CallsOf(state.range(0));
  void* entity = nullptr;
  for (const std::uint32_t call : calls.Items())
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, &entity);
  for (auto _ : state) {
    const std::uint32_t call = calls.Next();
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, &entity);
    releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, entity);
  }
  for (const std::uint32_t call : calls.Items())
    releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, call, entity);
}
BENCHMARK(CreateRelease)->Name("CreateRelease<Tessel>")->ArgName("live")->Arg(16)->Arg(4096);

void CreateReleaseFloor(benchmark::State& state) {
  Rotation calls = CallsOf(state.range(0));
  std::recursive_mutex mutex;
  std::map<Key, std::atomic<std::int64_t>> counters;
  for (const std::uint32_t call : calls.Items()) counters[{kalStore::KAL_TESSEL_VIDEO, call}] = 1;
  for (auto _ : state) {
    const std::uint32_t call = calls.Next();
    for (const int step : {1, -1}) {
      const std::lock_guard lock(mutex);
      counters.find({kalStore::KAL_TESSEL_VIDEO, call})->second.fetch_add(step);
    }
  }
}
BENCHMARK(CreateReleaseFloor)->Name("CreateRelease<Floor>")->ArgName("live")->Arg(16)->Arg(4096);

}  // namespace
