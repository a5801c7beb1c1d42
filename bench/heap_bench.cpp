// SPDX-License-Identifier: Apache-2.0
// How much memory does the import of a settings document of 10,000 entries take at its peak, the store that
// it fills included, beside the document's text?
//
// A program of its own: it counts what is allocated with operator new, which would slow every other
// measurement.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

#include "support/Settings.h"

namespace {

std::size_t g_live = 0;
std::size_t g_peak = 0;

}  // namespace

// The sized, array and nothrow forms of the standard library call these.
void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  g_live += malloc_usable_size(memory);
  g_peak = std::max(g_peak, g_live);
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) g_live -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace {

struct Tessel {
  static std::size_t Bytes(const std::string& text) {
    Call call;
    const std::size_t before = g_live;
    g_peak = before;
    call.Store().ApplyKalConfigs(text.c_str());
    return g_peak - before;
  }
};

struct Text {
  static std::size_t Bytes(const std::string& text) { return text.size(); }
};

template <class What>
void Peak(benchmark::State& state) {
  const std::string text = SettingsDocument(10'000);
  std::size_t bytes = 0;
  for (auto _ : state) bytes = What::Bytes(text);
  state.counters["bytes"] = static_cast<double>(bytes);
}

BENCHMARK(Peak<Tessel>)->Iterations(1);
BENCHMARK(Peak<Text>)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
