// How fast is a settings document read and written, how does that grow with its size, and what memory does
// the parsed document take?
//
//   json_bench --benchmark_min_time=1
//
// One thread, documents of N entries as a store exports them. Bytes per second are bytes of JSON text;
// bytes_per_entry is what the parsed document keeps on the heap. With nlohmann-json installed, the same for
// it.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <optional>
#include <string>

#include "tessel/json.h"

#ifdef TESSEL_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif

namespace {

std::string settingsDocument(std::int64_t entries) {
  std::string text = R"({"Common":[)";
  for (std::int64_t i = 0; i < entries; ++i) {
    if (i) text += ',';
    text += R"({"key":"Component.Setting.)" + std::to_string(i) + R"(","value":")" +
            std::to_string(i * 7919) + "\"}";
  }
  return text + "]}";
}

std::size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

struct Tessel {
  using Document = json::Value;
  static Document Read(const std::string& text) { return json::Deserialize(text); }
  static std::string Write(const Document& document) { return json::Serialize(document); }
};

#ifdef TESSEL_BENCH_NLOHMANN
struct Nlohmann {
  using Document = nlohmann::json;
  static Document Read(const std::string& text) { return nlohmann::json::parse(text); }
  static std::string Write(const Document& document) { return document.dump(); }
};
#endif

void countText(benchmark::State& state, const std::string& text) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}

// Reading includes giving the document back: a settings import does both.
template <class Library>
void Read(benchmark::State& state) {
  const std::string text = settingsDocument(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(Library::Read(text));
  countText(state, text);
}

template <class Library>
void Write(benchmark::State& state) {
  const std::string text = settingsDocument(state.range(0));
  const auto document = Library::Read(text);
  for (auto _ : state) benchmark::DoNotOptimize(Library::Write(document));
  countText(state, text);
}

template <class Library>
void Memory(benchmark::State& state) {
  const std::string text = settingsDocument(state.range(0));
  std::size_t taken = 0;
  for (auto _ : state) {
    const std::size_t before = heapInUse();
    const std::optional<typename Library::Document> document = Library::Read(text);
    taken = heapInUse() - before;
  }
  state.counters["bytes_per_entry"] = static_cast<double>(taken) / static_cast<double>(state.range(0));
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(Read<Tessel>)->Apply(sizes)->Complexity(benchmark::oN);
BENCHMARK(Write<Tessel>)->Apply(sizes)->Complexity(benchmark::oN);
BENCHMARK(Memory<Tessel>)->Apply(sizes)->Iterations(1);

#ifdef TESSEL_BENCH_NLOHMANN
BENCHMARK(Read<Nlohmann>)->Apply(sizes)->Complexity(benchmark::oN);
BENCHMARK(Write<Nlohmann>)->Apply(sizes)->Complexity(benchmark::oN);
BENCHMARK(Memory<Nlohmann>)->Apply(sizes)->Iterations(1);
#endif

}  // namespace
