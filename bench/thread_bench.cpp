// SPDX-License-Identifier: Apache-2.0
// What does it cost to pass work to another thread, beside Boost.Asio, beside the simplest queue, a deque of
// functions under a mutex with a condition variable (Floor), and beside a careful one for the same events
// (Locked)?
//
//   thread_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
//   Post         10,000 events, until all have run; what is posted is made before the clock starts
//   PostChanges  10,000 sets of a name with one posted subscriber, until all have run
//   Send         one event, and the wait until it has run
//
// cpus:1 has both threads on one CPU, cpus:2 on one each.

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <thread>
#include <vector>

#include "support/FloorThread.h"
#include "support/LockedThread.h"
#include "support/Pin.h"
#include "support/Settings.h"
#include "util/util.h"

#ifdef TESSEL_BENCH_BOOST
#include <boost/asio.hpp>
#endif

namespace {

using kalStore::KalConfigEvent;

constexpr int kBatch = 10'000;

/// Counts the work of a batch; the last of it ends the wait.
class Batch {
 public:
  void Run() {
    if (++m_count % kBatch == 0) m_done.release();
  }
  void Wait() { m_done.acquire(); }

 private:
  long m_count = 0;
  std::binary_semaphore m_done{0};
};

class BatchEvent : public ICmEvent {
 public:
  explicit BatchEvent(Batch& batch) : m_batch(batch) {}
  int OnEventFire() override {
    m_batch.Run();
    return 0;
  }

 private:
  Batch& m_batch;
};

class CountingEvent : public ICmEvent {
 public:
  explicit CountingEvent(long& count) : m_count(count) {}
  int OnEventFire() override {
    ++m_count;
    return 0;
  }

 private:
  long& m_count;
};

/// Makes a batch with Prepare(), and posts it with Post().
class Tessel {
 public:
  Tessel() { m_thread.Start(); }
  void Prepare(Batch& batch) {
    m_events.clear();
    for (int i = 0; i < kBatch; ++i) m_events.push_back(new BatchEvent(batch));
  }
  void Post() {
    ICmEventQueue* const queue = m_thread.GetEventQueue();
    for (ICmEvent* event : m_events) queue->PostEvent(event, ICmEventQueue::kDefaultPriority, 0);
  }
  void Send(long& count) { m_thread.GetEventQueue()->SendEvent(new CountingEvent(count), 0); }

 private:
  ACmThread m_thread;
  std::vector<ICmEvent*> m_events;
};

class Locked {
 public:
  void Prepare(Batch& batch) {
    m_events.clear();
    for (int i = 0; i < kBatch; ++i) m_events.push_back(new BatchEvent(batch));
  }
  void Post() {
    for (ICmEvent* event : m_events) m_thread.Post(event);
  }

 private:
  LockedThread m_thread;
  std::vector<ICmEvent*> m_events;
};

class Floor {
 public:
  void Prepare(Batch& batch) {
    m_work.assign(kBatch, [&batch] { batch.Run(); });
  }
  void Post() {
    for (std::function<void()>& work : m_work) m_thread.Post(std::move(work));
  }
  void Send(long& count) {
    m_thread.Send([&count] { ++count; });
  }

 private:
  FloorThread m_thread;
  std::vector<std::function<void()>> m_work;
};

#ifdef TESSEL_BENCH_BOOST
class Asio {
 public:
  ~Asio() { m_context.stop(); }
  void Prepare(Batch& batch) { m_batch = &batch; }
  void Post() {
    for (int i = 0; i < kBatch; ++i) boost::asio::post(m_context, [batch = m_batch] { batch->Run(); });
  }

 private:
  boost::asio::io_context m_context;
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work{m_context.get_executor()};
  std::jthread m_thread{[this] { m_context.run(); }};
  Batch* m_batch = nullptr;
};
#endif

/// Makes the thread on the last of `cpus` CPUs, and stays on the first.
template <class Thread>
class Pinned {
 public:
  explicit Pinned(int cpus) {
    const Pin pin(cpus - 1);
    m_thread.emplace();
  }
  Thread* operator->() { return &*m_thread; }

 private:
  std::optional<Thread> m_thread;
  const Pin m_pin{0};
};

template <class Work>
void Time(benchmark::State& state, Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

bool HasCpus(benchmark::State& state) {
  if (state.range(0) <= Pin::Cpus()) return true;
  state.SkipWithError("fewer CPUs than threads");
  return false;
}

template <class Thread>
void Post(benchmark::State& state) {
  if (!HasCpus(state)) return;
  Batch batch;
  Pinned<Thread> thread(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    thread->Prepare(batch);
    Time(state, [&] {
      thread->Post();
      batch.Wait();
    });
  }
  state.SetItemsProcessed(state.iterations() * kBatch);
}

#define TESSEL_BENCH_POST(thread) \
  BENCHMARK(Post<thread>)->ArgName("cpus")->Arg(1)->Arg(2)->UseManualTime()->Unit(benchmark::kMicrosecond)

TESSEL_BENCH_POST(Tessel);
TESSEL_BENCH_POST(Locked);
TESSEL_BENCH_POST(Floor);
#ifdef TESSEL_BENCH_BOOST
TESSEL_BENCH_POST(Asio);
#endif

void PostChanges(benchmark::State& state) {
  if (!HasCpus(state)) return;
  struct Started : ACmThread {
    Started() { Start(); }
  };
  Batch batch;
  Pinned<Started> thread(static_cast<int>(state.range(0)));
  Call call;
  kalStore::KalConfigHelper facade(call.Id());
  constexpr const char* kName = "VideoSetting0042";
  facade.SubscribeConfig(
      kName, [&batch](const KalConfigEvent&) { batch.Run(); }, kGroup, &*thread.operator->(), true);
  const char* const values[] = {"one value", "another value"};
  for (auto _ : state) {
    for (int i = 0; i < kBatch; ++i) facade.SetKalConfig(kName, values[i % 2], kGroup);
    batch.Wait();
  }
  state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(PostChanges)
    ->Name("PostChanges<Tessel>")
    ->ArgName("cpus")
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

template <class Thread>
void Send(benchmark::State& state) {
  if (!HasCpus(state)) return;
  long count = 0;
  Pinned<Thread> thread(static_cast<int>(state.range(0)));
  for (auto _ : state) thread->Send(count);
  benchmark::DoNotOptimize(count);
}
BENCHMARK(Send<Tessel>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(Send<Floor>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();

}  // namespace
