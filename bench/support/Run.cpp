// SPDX-License-Identifier: Apache-2.0
#include "support/Run.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <semaphore>
#include <thread>

namespace {

/// A thread that sleeps.
class Company {
 public:
  ~Company() { m_end.release(); }

 private:
  std::binary_semaphore m_end{0};
  std::jthread m_thread{[this] { m_end.acquire(); }};
};

}  // namespace

int RunBenchmarks(int argc, char** argv) {
  const Company company;
  // Memory once taken from the system stays in the process, as in an engine that runs for hours: page faults
  // depend on what ran before, not on what is measured.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::AddCustomContext("compiler", TESSEL_BENCH_COMPILER);
  benchmark::AddCustomContext("flags", TESSEL_BENCH_FLAGS);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
