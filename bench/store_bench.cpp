// What users of a store pay, each beside a floor in the same program: the least that does the job without
// subscriptions by name, thread choice, safe removal and trace.
//   set, get      an ordered map under a recursive mutex, then direct std::function calls
//   post, send    a deque under a mutex with a condition variable
//   apply, dump   parsing and writing the same text

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <semaphore>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tessel/KalConfig.h"
#include "tessel/json.h"

namespace {

using namespace kalStore;

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr int kNames = 1000;
constexpr int kBatch = 1000;

std::string NameOf(int index) {
  return "name" + std::to_string(index);
}

/// A store of usual size, so that a look-up is not trivial.
void Fill(KalConfig& store) {
  for (int i = 0; i < kNames; ++i) store.SetKalConfig(kGroup, NameOf(i).c_str(), i, false, false);
}

/// The floor of a store.
class FloorStore {
 public:
  using Callback = std::function<void(const ConfigData& oldValue, const ConfigData& newValue)>;

  FloorStore() {
    for (int i = 0; i < kNames; ++i) m_values[NameOf(i)].value = i;
  }
  void Subscribe(std::string_view name, Callback callback) {
    std::lock_guard lock(m_mutex);
    m_values.find(name)->second.callbacks.push_back(std::move(callback));
  }
  void Unsubscribe(std::string_view name) {
    std::lock_guard lock(m_mutex);
    m_values.find(name)->second.callbacks.pop_back();
  }
  void Set(std::string_view name, ConfigData value) {
    m_mutex.lock();
    Entry& entry = m_values.find(name)->second;
    const ConfigData previous = std::exchange(entry.value, value);
    m_mutex.unlock();
    for (const Callback& callback : entry.callbacks) callback(previous, value);
  }
  ConfigData Get(std::string_view name) {
    std::lock_guard lock(m_mutex);
    return m_values.find(name)->second.value;
  }

 private:
  struct Entry {
    ConfigData value;
    std::list<Callback> callbacks;
  };

  std::recursive_mutex m_mutex;
  std::map<std::string, Entry, std::less<>> m_values;
};

/// The floor of a thread with an event queue.
class FloorThread {
 public:
  ~FloorThread() {
    Post(nullptr);
    m_thread.join();
  }
  void Post(std::function<void()> work) {
    {
      std::lock_guard lock(m_mutex);
      m_queue.push_back(std::move(work));
    }
    m_changed.notify_one();
  }
  void Send(const std::function<void()>& work) {
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
    Post([&] {
      work();
      std::lock_guard lock(mutex);
      isDone = true;
      changed.notify_one();
    });
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return isDone; });
  }

 private:
  void run() {
    for (;;) {
      std::unique_lock lock(m_mutex);
      m_changed.wait(lock, [this] { return !m_queue.empty(); });
      const std::function<void()> work = std::move(m_queue.front());
      m_queue.pop_front();
      lock.unlock();
      if (!work) return;
      work();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_queue;
  std::thread m_thread{[this] { run(); }};
};

void Set(benchmark::State& state) {
  KalConfig store(5);
  Fill(store);
  long told = 0;
  for (int i = 0; i < state.range(0); ++i) {
    store.SubscribeConfig(
        kGroup, "name500", [&told](const KalConfigEvent&) { ++told; }, nullptr, false);
  }
  int value = 0;
  for (auto _ : state) benchmark::DoNotOptimize(store.SetKalConfig(kGroup, "name500", ++value, false, false));
  benchmark::DoNotOptimize(told);
}
BENCHMARK(Set)->Arg(0)->Arg(1)->Arg(8)->Arg(64);

void SetFloor(benchmark::State& state) {
  FloorStore store;
  long told = 0;
  for (int i = 0; i < state.range(0); ++i) {
    store.Subscribe("name500", [&told](const ConfigData&, const ConfigData&) { ++told; });
  }
  int value = 0;
  for (auto _ : state) store.Set("name500", ++value);
  benchmark::DoNotOptimize(told);
}
BENCHMARK(SetFloor)->Arg(0)->Arg(1)->Arg(8)->Arg(64);

void Get(benchmark::State& state) {
  KalConfig store(5);
  Fill(store);
  ConfigData value;
  for (auto _ : state) benchmark::DoNotOptimize(store.GetKalConfig(kGroup, "name500", value));
}
BENCHMARK(Get);

void GetFloor(benchmark::State& state) {
  FloorStore store;
  for (auto _ : state) benchmark::DoNotOptimize(store.Get("name500"));
}
BENCHMARK(GetFloor);

void SubscribeAndRemove(benchmark::State& state) {
  KalConfig store(5);
  Fill(store);
  store.RemoveKalConfig(kGroup, "name500");
  for (auto _ : state) {
    store.UnsubscribeConfig(store.SubscribeConfig(
        kGroup, "name500", [](const KalConfigEvent&) {}, nullptr, false));
  }
}
BENCHMARK(SubscribeAndRemove);

void SubscribeAndRemoveFloor(benchmark::State& state) {
  FloorStore store;
  for (auto _ : state) {
    store.Subscribe("name500", [](const ConfigData&, const ConfigData&) {});
    store.Unsubscribe("name500");
  }
}
BENCHMARK(SubscribeAndRemoveFloor);

/// One set each, posted and run: a batch, then the wait for its last.
void Post(benchmark::State& state) {
  KalConfig store(5);
  Fill(store);
  ACmThread thread;
  thread.Start();
  int told = 0;
  std::binary_semaphore done(0);
  store.RemoveKalConfig(kGroup, "name500");
  store.SubscribeConfig(
      kGroup, "name500",
      [&](const KalConfigEvent&) {
        if (++told % kBatch == 0) done.release();
      },
      &thread, true);
  int value = 0;
  for (auto _ : state) {
    for (int i = 0; i < kBatch; ++i) store.SetKalConfig(kGroup, "name500", ++value, false, false);
    done.acquire();
  }
  state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(Post)->UseRealTime();

void PostFloor(benchmark::State& state) {
  FloorStore store;
  FloorThread thread;
  int told = 0;
  std::binary_semaphore done(0);
  store.Subscribe("name500", [&](const ConfigData& oldValue, const ConfigData& newValue) {
    thread.Post([&told, &done, oldValue, newValue] {
      if (++told % kBatch == 0) done.release();
    });
  });
  int value = 0;
  for (auto _ : state) {
    for (int i = 0; i < kBatch; ++i) store.Set("name500", ++value);
    done.acquire();
  }
  state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(PostFloor)->UseRealTime();

void Send(benchmark::State& state) {
  KalConfig store(5);
  Fill(store);
  ACmThread thread;
  thread.Start();
  int told = 0;
  store.SubscribeConfig(
      kGroup, "name500", [&told](const KalConfigEvent&) { ++told; }, &thread, false);
  int value = 0;
  for (auto _ : state) store.SetKalConfig(kGroup, "name500", ++value, true, false);
}
BENCHMARK(Send)->UseRealTime();

void SendFloor(benchmark::State& state) {
  FloorStore store;
  FloorThread thread;
  int told = 0;
  store.Subscribe("name500", [&](const ConfigData&, const ConfigData&) { thread.Send([&told] { ++told; }); });
  int value = 0;
  for (auto _ : state) store.Set("name500", ++value);
}
BENCHMARK(SendFloor)->UseRealTime();

/// A settings document of about 70 bytes an entry, spread over all groups.
std::string DocumentOf(std::int64_t entries) {
  KalConfig store(5);
  for (std::int64_t i = 0; i < entries; ++i) {
    const std::string name = "Component.Setting." + std::to_string(i * 7919 % entries);
    store.SetKalConfig(static_cast<KalConfigGroup>(i % KAL_CONFIG_GROUP_LAST), name.c_str(),
                       "some text for setting " + std::to_string(i), false, false);
  }
  return store.DumpKalConfigs(kAllConfigGroups);
}

void Apply(benchmark::State& state) {
  const std::string text = DocumentOf(state.range(0));
  for (auto _ : state) {
    KalConfig store(5);
    benchmark::DoNotOptimize(store.ApplyKalConfigs(text.c_str()));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Apply)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

void ApplyFloorDeserialize(benchmark::State& state) {
  const std::string text = DocumentOf(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(json::Deserialize(text));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ApplyFloorDeserialize)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

void Dump(benchmark::State& state) {
  const std::string text = DocumentOf(state.range(0));
  KalConfig store(5);
  store.ApplyKalConfigs(text.c_str());
  for (auto _ : state) benchmark::DoNotOptimize(store.DumpKalConfigs(kAllConfigGroups));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Dump)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

}  // namespace
