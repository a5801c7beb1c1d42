// SPDX-License-Identifier: Apache-2.0
// What does a read by a LiveConfig cost beside the atomic load that it is, and how long does a single read
// take at worst while others set the value, by a LiveConfig and through the store?

#include <benchmark/benchmark.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <thread>
#include <vector>

#include "support/Pin.h"
#include "support/Settings.h"
#include "tessel/typed.h"

namespace {

using kalStore::ConfigKey;
using kalStore::KalConfigHelper;
using kalStore::LiveConfig;

constexpr ConfigKey<int> kKey{kGroup, "Bitrate", 64000};

class Live {
 public:
  explicit Live(KalConfigHelper& settings) : m_value(settings, kKey) {}
  int Get() const { return m_value.Get(); }

 private:
  LiveConfig<int> m_value;
};

class Key {
 public:
  explicit Key(KalConfigHelper& settings) : m_settings(settings) {}
  int Get() const { return kKey.Get(m_settings); }

 private:
  KalConfigHelper& m_settings;
};

/// On a cache line of its own, like what a LiveConfig reads.
class alignas(64) Atomic {
 public:
  explicit Atomic(KalConfigHelper&) {}
  int Get() const { return m_value.load(std::memory_order_relaxed); }

 private:
  std::atomic<int> m_value{1};
};

/// What the clock adds to each time.
struct Nothing {
  explicit Nothing(KalConfigHelper&) {}
  int Get() const { return 0; }
};

template <class Value>
void Read(benchmark::State& state) {
  const Call call;
  KalConfigHelper settings(call.Id());
  kKey.Set(settings, 1);
  const Value value(settings);
  for (auto _ : state) benchmark::DoNotOptimize(value.Get());
}
BENCHMARK(Read<Live>);
BENCHMARK(Read<Atomic>);
BENCHMARK(Read<Key>);

/// Sets another value all the time, on the second CPU, while it lives.
class Setters {
 public:
  Setters(KalConfigHelper& settings, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      m_threads.emplace_back([this, &settings] {
        const Pin pin(1);
        for (int value = 0; !m_isOver; value = (value + 1) % 100'000) kKey.Set(settings, value);
      });
    }
  }
  ~Setters() {
    m_isOver = true;
    for (std::thread& thread : m_threads) thread.join();
  }

 private:
  std::atomic<bool> m_isOver{false};
  std::vector<std::thread> m_threads;
};

/// Gives the calling thread a real-time priority while it lives, as an audio thread has: what it waits for is
/// then the store alone. Where the system refuses, the losses of its own processor count as well.
class RealTime {
 public:
  RealTime() {
    const sched_param first{.sched_priority = 1};
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &first);
  }
  ~RealTime() {
    const sched_param none{.sched_priority = 0};
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &none);
  }
  RealTime(const RealTime&) = delete;
  RealTime& operator=(const RealTime&) = delete;
};

constexpr std::size_t kReads = 10'000'000;
constexpr std::size_t kBatch = 100'000;

/// The time of each read, in nanoseconds.
template <class Value>
std::vector<std::uint32_t> Times(const Value& value) {
  using std::chrono::steady_clock;
  std::vector<std::uint32_t> times(kReads);
  const Pin pin(0);
  const RealTime priority;
  for (auto begin = times.begin(); begin != times.end(); begin += kBatch) {
    const auto start = steady_clock::now();
    auto before = start;
    std::for_each(begin, begin + kBatch, [&](std::uint32_t& time) {
      benchmark::DoNotOptimize(value.Get());
      const auto now = steady_clock::now();
      time = static_cast<std::uint32_t>(
          std::min<std::int64_t>((now - before).count(), std::numeric_limits<std::uint32_t>::max()));
      before = now;
    });
    // Linux stops a real-time thread that leaves the others no time.
    std::this_thread::sleep_for(before - start);
  }
  return times;
}

// With one setter, only what else the machine runs takes the processor from it; two take it from each other,
// also while one of them holds the lock.
template <class Value>
void ReadBeside(benchmark::State& state) {
  if (Pin::Cpus() < 2) {
    state.SkipWithError("one CPU");
    return;
  }
  const Call call;
  KalConfigHelper settings(call.Id());
  const Value value(settings);
  std::vector<std::uint32_t> times;
  for (auto _ : state) {
    const Setters setters(settings, state.range(0));
    times = Times(value);
  }
  std::sort(times.begin(), times.end());
  const auto percentile = [&](double part) {
    return static_cast<double>(times[static_cast<std::size_t>(part * (kReads - 1))]);
  };
  state.counters["p50"] = percentile(0.5);
  state.counters["p99.9"] = percentile(0.999);
  state.counters["p99.99"] = percentile(0.9999);
  state.counters["greatest"] = percentile(1);
}
#define TESSEL_BENCH_BESIDE(value) \
  BENCHMARK(ReadBeside<value>)     \
      ->ArgName("setters")         \
      ->Arg(1)                     \
      ->Arg(2)                     \
      ->Iterations(1)              \
      ->Repetitions(1)             \
      ->UseRealTime()

TESSEL_BENCH_BESIDE(Live);
TESSEL_BENCH_BESIDE(Key);
TESSEL_BENCH_BESIDE(Nothing);

}  // namespace
