// SPDX-License-Identifier: Apache-2.0
// What does it cost to notify subscribers of a change, to subscribe and unsubscribe, and to read a bound
// name, compared with the signal libraries and with the simplest of them, a vector of std::function?
//
//   notify_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
// Subscribers are notified directly, on the setter's thread, and count. Set is the whole set, look-up and
// overwrite included; minus Set with no subscriber it is the notification. Names of 16 characters, 100 in the
// group.

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "support/Settings.h"
#include "tessel/journal.h"

#ifdef TESSEL_BENCH_BOOST
#include <boost/signals2/signal.hpp>
#endif
#ifdef TESSEL_BENCH_SIGCPP
#include <sigc++/sigc++.h>
#endif

namespace {

using kalStore::KalConfigEvent;
using kalStore::KalConfigHelper;

/// A call with 100 settings.
class FilledCall : public Call {
 public:
  FilledCall() {
    for (const std::string& name : NamesOf(100))
      Store().SetKalConfig(kGroup, name.c_str(), "1", false, false);
  }
};

constexpr const char* kName = "VideoSetting0042";

void Set(benchmark::State& state) {
  FilledCall call;
  KalConfigHelper facade(call.Id());
  long notified = 0;
  for (int i = 0; i < state.range(0); ++i) {
    call.Store().SubscribeConfig(
        kGroup, kName, [&notified](const KalConfigEvent&) { ++notified; }, nullptr, false);
  }
  const char* const values[] = {"one value", "another value"};
  unsigned int count = 0;
  for (auto _ : state) benchmark::DoNotOptimize(facade.SetKalConfig(kName, values[++count % 2], kGroup));
  benchmark::DoNotOptimize(notified);
}
BENCHMARK(Set)->Name("Set<Tessel>")->ArgName("subscribers")->Arg(0)->Arg(1)->Arg(8)->Arg(64);

void SetInJournal(benchmark::State& state) {
  kalStore::StartJournal(4096);
  Set(state);
  kalStore::StopJournal();
}
BENCHMARK(SetInJournal)->Name("SetInJournal<Tessel>")->ArgName("subscribers")->Arg(0)->Arg(1);

// The signal libraries: Connect() returns what Disconnect() takes.

struct FunctionVector {
  using Slot = std::function<void(const KalConfigEvent&)>;
  std::vector<Slot> slots;
  std::size_t Connect(Slot slot) {
    slots.push_back(std::move(slot));
    return slots.size() - 1;
  }
  void Disconnect(std::size_t place) { slots.erase(slots.begin() + static_cast<std::ptrdiff_t>(place)); }
  void Emit(const KalConfigEvent& event) {
    for (const Slot& slot : slots) slot(event);
  }
};

/// The least that connects, disconnects and emits on any thread: a list that is replaced whole under a mutex,
/// and of which an emission keeps a copy. The distribution has no sigslot, whose signals work like this.
class CopiedList {
 public:
  using Slot = std::function<void(const KalConfigEvent&)>;

  int Connect(Slot slot) {
    const std::lock_guard lock(m_mutex);
    auto slots = std::make_shared<Slots>(*m_slots);
    slots->emplace_back(++m_last, std::move(slot));
    m_slots = std::move(slots);
    return m_last;
  }
  void Disconnect(int id) {
    const std::lock_guard lock(m_mutex);
    auto slots = std::make_shared<Slots>(*m_slots);
    std::erase_if(*slots, [id](const auto& slot) { return slot.first == id; });
    m_slots = std::move(slots);
  }
  void Emit(const KalConfigEvent& event) {
    for (const auto& [id, slot] : *slots()) slot(event);
  }

 private:
  using Slots = std::vector<std::pair<int, Slot>>;

  std::shared_ptr<const Slots> slots() {
    const std::lock_guard lock(m_mutex);
    return m_slots;
  }

  std::mutex m_mutex;
  std::shared_ptr<const Slots> m_slots = std::make_shared<Slots>();
  int m_last = 0;
};

#ifdef TESSEL_BENCH_BOOST
struct Signals2 {
  boost::signals2::signal<void(const KalConfigEvent&)> signal;
  template <class Slot>
  auto Connect(const Slot& slot) {
    return signal.connect(slot);
  }
  void Disconnect(const boost::signals2::connection& connection) { connection.disconnect(); }
  void Emit(const KalConfigEvent& event) { signal(event); }
};
#endif

#ifdef TESSEL_BENCH_SIGCPP
struct SigCpp {
  sigc::signal<void(const KalConfigEvent&)> signal;
  template <class Slot>
  auto Connect(const Slot& slot) {
    return signal.connect(slot);
  }
  void Disconnect(sigc::connection connection) { connection.disconnect(); }
  void Emit(const KalConfigEvent& event) { signal(event); }
};
#endif

template <class Signal>
void Emit(benchmark::State& state) {
  Signal signal;
  long notified = 0;
  for (int i = 0; i < state.range(0); ++i) signal.Connect([&notified](const KalConfigEvent&) { ++notified; });
  const KalConfigEvent event{kName, "one value", "another value", {}, kGroup, kal::KAL_SESSION_AUDIO};
  for (auto _ : state) signal.Emit(event);
  benchmark::DoNotOptimize(notified);
}

template <class Signal>
void ConnectAndDisconnect(benchmark::State& state) {
  Signal signal;
  long notified = 0;
  for (int i = 0; i < state.range(0); ++i) signal.Connect([&notified](const KalConfigEvent&) { ++notified; });
  for (auto _ : state) signal.Disconnect(signal.Connect([&notified](const KalConfigEvent&) { ++notified; }));
}

#define TESSEL_BENCH_SIGNAL(signal)                                         \
  BENCHMARK(Emit<signal>)->ArgName("subscribers")->Arg(1)->Arg(8)->Arg(64); \
  BENCHMARK(ConnectAndDisconnect<signal>)                                   \
      ->Name("SubscribeAndRemove<" #signal ">")                             \
      ->ArgName("others")                                                   \
      ->Arg(0)                                                              \
      ->Arg(64)

TESSEL_BENCH_SIGNAL(FunctionVector);
TESSEL_BENCH_SIGNAL(CopiedList);
#ifdef TESSEL_BENCH_BOOST
TESSEL_BENCH_SIGNAL(Signals2);
#endif
#ifdef TESSEL_BENCH_SIGCPP
TESSEL_BENCH_SIGNAL(SigCpp);
#endif

// The name has no value, so that a subscription delivers nothing at once.
void SubscribeAndRemove(benchmark::State& state) {
  FilledCall call;
  kalStore::IKalConfig& store = call.Store();
  store.RemoveKalConfig(kGroup, kName);
  long notified = 0;
  const auto subscribe = [&] {
    return store.SubscribeConfig(
        kGroup, kName, [&notified](const KalConfigEvent&) { ++notified; }, nullptr, false);
  };
  for (int i = 0; i < state.range(0); ++i) subscribe();
  for (auto _ : state) store.UnsubscribeConfig(subscribe());
}
BENCHMARK(SubscribeAndRemove)->Name("SubscribeAndRemove<Tessel>")->ArgName("others")->Arg(0)->Arg(64);

void BoundRead(benchmark::State& state) {
  FilledCall call;
  KalConfigHelper facade(call.Id());
  facade.BindConfig(kName, [](const KalConfigEvent&) { return ConfigData("1"); }, kGroup);
  for (auto _ : state) {
    ConfigData value;
    benchmark::DoNotOptimize(facade.GetDynamicConfig(kName, value, kGroup));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BoundRead)->Name("BoundRead<Tessel>");

}  // namespace
