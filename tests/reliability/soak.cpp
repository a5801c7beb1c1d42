// SPDX-License-Identifier: Apache-2.0
// Keeps the whole library busy for a while, then looks whether anything was left behind.
//
//   tessel_soak [--seconds N] [--seed S]
//
// Exit status 0 when all is well, 1 when something was left or went wrong, 2 for arguments that mean nothing.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include "SoakComponent.h"
#include "SoakTrace.h"
#include "Watchdog.h"
#include "simulate/Memory.h"
#include "tessel/tessel.h"

using namespace kalStore;
using std::chrono::duration;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

namespace {

constexpr unsigned int kComponents = 4;
constexpr unsigned int kDeliveryThreads = 3;
constexpr std::uint64_t kMemoryToleranceKiB = 4096;
constexpr seconds kTimeToEnd{60};
constexpr std::uint32_t kLastingCall = 2;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsDistorted = true;
#elif defined(__has_feature)
constexpr bool kMemoryIsDistorted = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kMemoryIsDistorted = false;
#endif

struct Options {
  long seconds = 60;
  std::uint64_t seed = 1;
};

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 == argc) return false;
    const std::string_view name(argv[i]);
    char* end = nullptr;
    const unsigned long value = std::strtoul(argv[i + 1], &end, 10);
    if (end == argv[i + 1] || *end != '\0') return false;
    if (name == "--seconds" && value > 0 && value <= 1000000) {
      options.seconds = static_cast<long>(value);
    } else if (name == "--seed") {
      options.seed = value;
    } else {
      return false;
    }
  }
  return true;
}

// Prints one line of the report; whether it is as it should be.
bool Report(const char* what, long long value, bool isGood) {
  std::printf("%-34s %12lld%s\n", what, value, isGood ? "" : "   WRONG");
  return isGood;
}

// What happens around the components: calls end and begin, threads stop in the middle, the trace changes.
// Returns the memory in use after the first tenth, in KiB.
std::uint64_t Disturb(SoakShared& shared, const Options& options) {
  std::mt19937_64 random(options.seed);
  const auto start = steady_clock::now();
  const auto end = start + seconds(options.seconds);
  const auto firstTenth = start + seconds(options.seconds) / 10;
  std::uint64_t memory = 0;
  while (steady_clock::now() < end) {
    std::this_thread::sleep_for(milliseconds(random() % 4));
    SoakTrace::Change(static_cast<unsigned int>(random() % 12));
    if (random() % 4 == 0) shared.calls.Replace(static_cast<std::size_t>(random() % shared.calls.Slots()));
    if (random() % 4 == 0) {
      ACmThread& thread = *shared.threads[static_cast<std::size_t>(random() % shared.threads.size())];
      thread.Stop();
      std::this_thread::sleep_for(milliseconds(random() % 4));
      thread.Start();
    }
    if (memory == 0 && steady_clock::now() >= firstTenth) memory = simulate::MemoryInUse().residentKiB;
  }
  return memory;
}

bool Soak(const Options& options) {
  const auto start = steady_clock::now();
  SoakShared shared;
  const SoakTrace trace;
  for (unsigned int i = 0; i < kDeliveryThreads; ++i) {
    shared.threads.push_back(std::make_unique<ACmThread>("delivery"));
    shared.threads.back()->Start();
  }
  shared.lasting = std::make_unique<KalConfigHelper>(kLastingCall);
  std::vector<std::thread> components;
  for (unsigned int i = 0; i < kComponents; ++i) {
    components.emplace_back([&shared, seed = options.seed + 1 + i] { SoakComponent(shared, seed).Run(); });
  }
  const std::uint64_t memoryBefore = Disturb(shared, options);
  const std::uint64_t memoryAfter = simulate::MemoryInUse().residentKiB;
  shared.isOver = true;
  for (std::thread& component : components) component.join();
  const double elapsed = duration<double>(steady_clock::now() - start).count();
  for (const auto& thread : shared.threads) thread->Stop();
  shared.calls.EndAll();
  shared.lasting.reset();
  CleanUpKalConfig(kLastingCall);

  // The call that was only read: its store stays until the call is cleaned up.
  const std::uint32_t staying = GetKalConfigSizeForUT();
  CleanUpKalConfig(kSoakReadOnlyCall);

  const auto perSecond = [&](std::uint64_t count) {
    return static_cast<long long>(static_cast<double>(count) / elapsed);
  };
  Report("seconds", static_cast<long long>(elapsed), true);
  Report("calls", shared.calls.Begun(), true);
  Report("operations", static_cast<long long>(shared.operations), true);
  Report("operations per second", perSecond(shared.operations), true);
  Report("deliveries", static_cast<long long>(shared.deliveries), true);
  Report("deliveries per second", perSecond(shared.deliveries), true);
  Report("trace lines", static_cast<long long>(SoakTrace::Lines()), true);
  bool isGood = Report("results that cannot be", static_cast<long long>(shared.faults), shared.faults == 0);
  isGood &= Report("callbacks after their removal", static_cast<long long>(shared.late), shared.late == 0);
  isGood &= Report("left in ended calls", static_cast<long long>(shared.calls.Leftovers()),
                   shared.calls.Leftovers() == 0);
  isGood &= Report("callbacks left", shared.callbacks, shared.callbacks == 0);
  isGood &= Report("stores of calls only read", staying, staying <= 1);
  isGood &= Report("stores left", GetKalConfigSizeForUT(), GetKalConfigSizeForUT() == 0);
  Report("memory after a tenth, KiB", static_cast<long long>(memoryBefore), true);
  isGood &= Report("memory at the end, KiB", static_cast<long long>(memoryAfter),
                   kMemoryIsDistorted || memoryAfter <= memoryBefore + kMemoryToleranceKiB);
  return isGood;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    std::fputs("usage: tessel_soak [--seconds N] [--seed S]\n", stderr);
    return 2;
  }
  std::printf("soak: %ld seconds, seed %llu\n", options.seconds,
              static_cast<unsigned long long>(options.seed));
  std::fflush(stdout);
  const Watchdog watchdog(seconds(options.seconds) + kTimeToEnd);
  return Soak(options) ? 0 : 1;
}
