// SPDX-License-Identifier: Apache-2.0
// What do a read and an overwrite through the facade cost, compared with the least that the same work could
// cost (a look-up in an ordered map under a recursive mutex, and a copy) and with other libraries?
//
//   values_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
// Names of 16 characters in one group, in shuffled order; values short enough for a std::string to store
// without an allocation; no subscribers, nothing traced. GKeyFile and property_tree have no lock and get
// none.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <string_view>

#include "support/FloorStore.h"
#include "support/Pin.h"
#include "support/Rotation.h"
#include "support/Settings.h"
#include "tessel/journal.h"

#ifdef TESSEL_BENCH_BOOST
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef TESSEL_BENCH_GLIB
#include <glib.h>
#endif
#ifdef TESSEL_BENCH_TBB
#include <tbb/concurrent_hash_map.h>
#endif

namespace {

using kalStore::KalConfigHelper;

class Tessel {
 public:
  void Get(const std::string& name) {
    ConfigData value;
    benchmark::DoNotOptimize(m_facade.GetKalConfig(name.c_str(), value, kGroup));
    benchmark::DoNotOptimize(value);
  }
  void Set(const std::string& name, const char* value) {
    benchmark::DoNotOptimize(m_facade.SetKalConfig(name.c_str(), value, kGroup));
  }

 private:
  Call m_call;
  KalConfigHelper m_facade{m_call.Id()};
};

class Floor {
 public:
  void Get(const std::string& name) {
    std::string value;
    benchmark::DoNotOptimize(m_store.Get(name.c_str(), value));
    benchmark::DoNotOptimize(value);
  }
  void Set(const std::string& name, const char* value) { m_store.Set(name.c_str(), value); }

 protected:
  FloorStore m_store;
};

struct InPlace : Floor {
  void Set(const std::string& name, const char* value) { m_store.SetInPlace(name.c_str(), value); }
};

#ifdef TESSEL_BENCH_BOOST
class PropertyTree {
 public:
  void Get(const std::string& name) { benchmark::DoNotOptimize(m_tree.get<std::string>(name)); }
  void Set(const std::string& name, const char* value) { m_tree.put(name, value); }

 private:
  boost::property_tree::ptree m_tree;
};
#endif

#ifdef TESSEL_BENCH_GLIB
class KeyFile {
 public:
  ~KeyFile() { g_key_file_free(m_file); }
  void Get(const std::string& name) {
    gchar* value = g_key_file_get_string(m_file, "Audio", name.c_str(), nullptr);
    benchmark::DoNotOptimize(value);
    g_free(value);
  }
  void Set(const std::string& name, const char* value) {
    g_key_file_set_string(m_file, "Audio", name.c_str(), value);
  }

 private:
  GKeyFile* m_file = g_key_file_new();
};
#endif

#ifdef TESSEL_BENCH_TBB
/// Compares keys without constructing a std::string; TBB finds entries by std::string_view then.
struct TransparentCompare {
  using is_transparent = void;
  static std::size_t hash(std::string_view key) { return std::hash<std::string_view>()(key); }
  static bool equal(std::string_view left, std::string_view right) { return left == right; }
};

template <class Key, class... Compare>
class ConcurrentHashMap {
 public:
  void Get(const std::string& name) {
    std::string value;
    if (typename Map::const_accessor entry; m_map.find(entry, Key(name.c_str()))) value = entry->second;
    benchmark::DoNotOptimize(value);
  }
  void Set(const std::string& name, const char* value) {
    typename Map::accessor entry;
    m_map.insert(entry, Key(name.c_str()));
    entry->second = value;
  }

 private:
  using Map = tbb::concurrent_hash_map<std::string, std::string, Compare...>;
  Map m_map;
};

using Tbb = ConcurrentHashMap<std::string>;
using TbbTransparent = ConcurrentHashMap<std::string_view, TransparentCompare>;
#endif

template <class Store>
void Fill(Store& store, const std::vector<std::string>& names) {
  for (const std::string& name : names) store.Set(name, "before");
}

template <class Store>
void Read(benchmark::State& state) {
  Rotation names(NamesOf(state.range(0)));
  Store store;
  Fill(store, names.Items());
  for (auto _ : state) store.Get(names.Next());
}

// Every overwrite is a change: no pass over the names sets the value that a name has.
template <class Store>
void Overwrite(benchmark::State& state) {
  Rotation names(NamesOf(state.range(0)));
  Store store;
  Fill(store, names.Items());
  const char* const values[] = {"one value", "another value"};
  std::int64_t count = 0;
  for (auto _ : state) store.Set(names.Next(), values[count++ / state.range(0) % 2]);
}

#define TESSEL_BENCH_STORE(store)                                  \
  BENCHMARK(Read<store>)->ArgName("names")->Arg(100)->Arg(10'000); \
  BENCHMARK(Overwrite<store>)->ArgName("names")->Arg(100)->Arg(10'000)

TESSEL_BENCH_STORE(Tessel);
TESSEL_BENCH_STORE(Floor);
BENCHMARK(Overwrite<InPlace>)->ArgName("names")->Arg(100)->Arg(10'000);
#ifdef TESSEL_BENCH_BOOST
TESSEL_BENCH_STORE(PropertyTree);
#endif
#ifdef TESSEL_BENCH_GLIB
TESSEL_BENCH_STORE(KeyFile);
#endif
#ifdef TESSEL_BENCH_TBB
TESSEL_BENCH_STORE(Tbb);
TESSEL_BENCH_STORE(TbbTransparent);
#endif

// One facade for all threads, a group and a CPU for each; the time is that of an operation of them together.
enum Access { kRead, kOverwrite, kOverwriteInJournal };

void Groups(benchmark::State& state, Access access) {
  static std::unique_ptr<Call> call;
  static std::unique_ptr<KalConfigHelper> facade;
  if (state.threads() > Pin::Cpus()) {
    state.SkipWithError("fewer CPUs than threads");
    return;
  }
  const Pin pin(state.thread_index());
  Rotation names(NamesOf(100));
  if (state.thread_index() == 0) {
    if (access == kOverwriteInJournal) kalStore::StartJournal(4096);
    call = std::make_unique<Call>();
    facade = std::make_unique<KalConfigHelper>(call->Id());
    for (const std::string& name : names.Items()) {
      for (int i = 0; i < state.threads(); ++i) {
        facade->SetKalConfig(name.c_str(), "before", static_cast<kalStore::KalConfigGroup>(i));
      }
    }
  }
  const auto group = static_cast<kalStore::KalConfigGroup>(state.thread_index());
  const char* const values[] = {"one value", "another value"};
  std::int64_t count = 0;
  for (auto _ : state) {
    const char* name = names.Next().c_str();
    if (access == kRead) {
      ConfigData value;
      benchmark::DoNotOptimize(facade->GetKalConfig(name, value, group));
    } else {
      benchmark::DoNotOptimize(facade->SetKalConfig(name, values[count++ / 100 % 2], group));
    }
  }
  if (state.thread_index() == 0) {
    facade.reset();
    call.reset();
    kalStore::StopJournal();
  }
}
BENCHMARK_CAPTURE(Groups, Read, kRead)->Name("ReadGroups<Tessel>")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK_CAPTURE(Groups, Overwrite, kOverwrite)
    ->Name("OverwriteGroups<Tessel>")
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();
BENCHMARK_CAPTURE(Groups, OverwriteInJournal, kOverwriteInJournal)
    ->Name("OverwriteGroupsInJournal<Tessel>")
    ->Threads(1)
    ->Threads(2)
    ->UseRealTime();

}  // namespace
