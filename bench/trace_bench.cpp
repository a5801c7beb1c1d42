// SPDX-License-Identifier: Apache-2.0
// What does a trace line cost where nobody wants it, and where somebody does?
//
//   trace_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
//   Disabled  a line above the mask, against a call into a shared library and a branch (Boundary), and a
//             volatile load and a branch (Load)
//   Enabled   a line of the common form (label, text, numbers, call id, address) to a sink that drops it,
//             against snprintf of the same text
//
// One thread works.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>

#include "support/boundary.h"
#include "trace/TraceLine.h"
#include "util/util_trace.h"

#ifdef TESSEL_BENCH_FMT
#include <fmt/format.h>
#endif
#ifdef TESSEL_BENCH_SPDLOG
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace sample {

/// Traces as the classes of a component do.
class Component {
 public:
  void SetLevel(int level) {
    TESSEL_TRACE(2, "sample::Component::SetLevel",
                 ", name=" << m_name << ", level=" << level << kalStore::internal::Cid{m_callId}
                           << kalStore::internal::This{this});
  }
  int Snprintf(char* buffer, std::size_t size, int level) const {
    return std::snprintf(buffer, size, "sample::Component::SetLevel, name=%s, level=%d [cid=%u] [this=0x%lx]",
                         m_name, level, m_callId, reinterpret_cast<unsigned long>(this));
  }
#ifdef TESSEL_BENCH_FMT
  void Fmt(char* buffer, std::size_t size, int level) const {
    fmt::format_to_n(buffer, size, "sample::Component::SetLevel, name={}, level={} [cid={}] [this=0x{:x}]",
                     m_name, level, m_callId, reinterpret_cast<unsigned long>(this));
  }
#endif
#ifdef TESSEL_BENCH_SPDLOG
  void Spdlog(spdlog::logger& logger, int level) const {
    logger.debug("sample::Component::SetLevel, name={}, level={} [cid={}] [this=0x{:x}]", m_name, level,
                 m_callId, reinterpret_cast<unsigned long>(this));
  }
#endif

 private:
  const char* const m_name = "microphone";
  const std::uint32_t m_callId = 1234;
};

}  // namespace sample

namespace {

constexpr std::size_t kLineSize = 1024;

void Disabled(benchmark::State& state) {
  set_external_trace_mask(0);
  sample::Component component;
  int level = 0;
  for (auto _ : state) component.SetLevel(++level);
}
BENCHMARK(Disabled)->Name("Disabled<Tessel>");

void DisabledBoundary(benchmark::State& state) {
  for (auto _ : state) {
    if (ReadBoundaryFlag() >= 2) state.SkipWithError("the flag is set");
  }
}
BENCHMARK(DisabledBoundary)->Name("Disabled<Boundary>");

void DisabledLoad(benchmark::State& state) {
  volatile int flag = 0;
  for (auto _ : state) {
    if (flag >= 2) state.SkipWithError("the flag is set");
  }
}
BENCHMARK(DisabledLoad)->Name("Disabled<Load>");

void Enabled(benchmark::State& state) {
  set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
  set_external_trace_mask(2);
  sample::Component component;
  int level = 0;
  for (auto _ : state) component.SetLevel(++level);
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
}
BENCHMARK(Enabled)->Name("Enabled<Tessel>");

void EnabledSnprintf(benchmark::State& state) {
  const sample::Component component;
  char buffer[kLineSize];
  int level = 0;
  for (auto _ : state) {
    component.Snprintf(buffer, sizeof buffer, ++level);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(EnabledSnprintf)->Name("Enabled<Snprintf>");

#ifdef TESSEL_BENCH_FMT
void EnabledFmt(benchmark::State& state) {
  const sample::Component component;
  char buffer[kLineSize];
  int level = 0;
  for (auto _ : state) {
    component.Fmt(buffer, sizeof buffer, ++level);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(EnabledFmt)->Name("Enabled<Fmt>");
#endif

#ifdef TESSEL_BENCH_SPDLOG
void Spdlog(benchmark::State& state, spdlog::level::level_enum level) {
  spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
  logger.set_level(level);
  const sample::Component component;
  int count = 0;
  for (auto _ : state) component.Spdlog(logger, ++count);
}
BENCHMARK_CAPTURE(Spdlog, Disabled, spdlog::level::info)->Name("Disabled<Spdlog>");
BENCHMARK_CAPTURE(Spdlog, Enabled, spdlog::level::debug)->Name("Enabled<Spdlog>");
#endif

}  // namespace
