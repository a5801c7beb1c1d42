// SPDX-License-Identifier: Apache-2.0
// How much memory does the import of a settings document of 10,000 entries take at its peak, the store that
// it fills included, beside the document's text? And how much a store with nothing in it, one more value, and
// one more subscription?
//
// A program of its own: it counts what is allocated with operator new, which would slow every other
// measurement.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "support/Settings.h"

namespace {

std::size_t g_live = 0;
std::size_t g_peak = 0;

}  // namespace

namespace {

void* Counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  g_live += malloc_usable_size(memory);
  g_peak = std::max(g_peak, g_live);
  return memory;
}

}  // namespace

// The array and nothrow forms of the standard library call these.
void* operator new(std::size_t size) {
  return Counted(std::malloc(size));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(step, (size + step - 1) / step * step));
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) g_live -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
  operator delete(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
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

constexpr int kCount = 1000;

void EmptyStore(benchmark::State& state) {
  kalStore::IKalConfig* stores[kCount] = {};
  const std::size_t before = g_live;
  for (auto _ : state) {
    for (std::uint32_t id = 0; id < kCount; ++id) kalStore::CreateKalConfig(id, &stores[id]);
  }
  state.counters["bytes"] = static_cast<double>(g_live - before) / kCount;
  for (std::uint32_t id = 0; id < kCount; ++id) {
    kalStore::ReleaseKalConfig(stores[id]);
    kalStore::CleanUpKalConfig(id);
  }
}
BENCHMARK(EmptyStore)->Name("EmptyStore<Tessel>")->Iterations(1);

void OneMoreValue(benchmark::State& state) {
  Call call;
  const std::vector<std::string> names = NamesOf(kCount);
  const std::size_t before = g_live;
  for (auto _ : state) {
    for (const std::string& name : names) call.Store().SetKalConfig(kGroup, name.c_str(), "1", false, false);
  }
  state.counters["bytes"] = static_cast<double>(g_live - before) / kCount;
}
BENCHMARK(OneMoreValue)->Name("OneMoreValue<Tessel>")->Iterations(1);

void OneMoreSubscription(benchmark::State& state) {
  Call call;
  const std::vector<std::string> names = NamesOf(kCount);
  const std::size_t before = g_live;
  for (auto _ : state) {
    for (const std::string& name : names) {
      call.Store().SubscribeConfig(
          kGroup, name.c_str(), [](const kalStore::KalConfigEvent&) {}, nullptr, false);
    }
  }
  state.counters["bytes"] = static_cast<double>(g_live - before) / kCount;
}
BENCHMARK(OneMoreSubscription)->Name("OneMoreSubscription<Tessel>")->Iterations(1);

/// What each may take at most.
template <int bytes>
void Bytes(benchmark::State& state) {
  for (auto _ : state) state.counters["bytes"] = bytes;
}
BENCHMARK(Bytes<130>)->Name("OneMoreValue<Aim>")->Iterations(1);
BENCHMARK(Bytes<400>)->Name("OneMoreSubscription<Aim>")->Iterations(1);

BENCHMARK(Peak<Tessel>)->Iterations(1);
BENCHMARK(Peak<Text>)->Iterations(1);

}  // namespace
