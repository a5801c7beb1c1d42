// SPDX-License-Identifier: Apache-2.0
// What does it cost to apply a settings document of 10,000 entries to an empty store and to dump one, beside
// the same done with two JSON libraries and one ordered map for each group?
//
//   document_bench --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
// The store, or the maps, are made and destroyed within the time of Apply. One thread works.

#include <benchmark/benchmark.h>

#include <map>
#include <string>

#include "support/Settings.h"

#ifdef TESSEL_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef TESSEL_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace {

constexpr int kEntries = 10'000;

struct Tessel {
  Call call;
  void Apply(const std::string& text) {
    benchmark::DoNotOptimize(call.Store().ApplyKalConfigs(text.c_str()));
  }
  std::string Dump() { return call.Store().DumpKalConfigs(kalStore::kAllConfigGroups); }
};

#ifdef TESSEL_BENCH_NLOHMANN
struct NlohmannAndMaps {
  std::map<std::string, std::map<std::string, std::string>> groups;
  void Apply(const std::string& text) {
    const nlohmann::json document = nlohmann::json::parse(text);
    for (const auto& [name, entries] : document.items()) {
      std::map<std::string, std::string>& group = groups[name];
      for (const nlohmann::json& entry : entries) {
        group.insert_or_assign(entry.at("key").get_ref<const std::string&>(),
                               entry.at("value").get_ref<const std::string&>());
      }
    }
  }
  std::string Dump() {
    nlohmann::json document;
    for (const auto& [name, group] : groups) {
      nlohmann::json& entries = document[name] = nlohmann::json::array();
      for (const auto& [key, value] : group) entries.push_back({{"key", key}, {"value", value}});
    }
    return document.dump();
  }
};
#endif

#ifdef TESSEL_BENCH_RAPIDJSON
struct RapidJsonAndMaps {
  std::map<std::string, std::map<std::string, std::string>> groups;
  void Apply(const std::string& text) {
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    for (const auto& [name, entries] : document.GetObject()) {
      std::map<std::string, std::string>& group = groups[name.GetString()];
      for (const auto& entry : entries.GetArray()) {
        group.insert_or_assign(entry["key"].GetString(), entry["value"].GetString());
      }
    }
  }
  std::string Dump() {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    const auto size = [](const std::string& text) { return static_cast<rapidjson::SizeType>(text.size()); };
    writer.StartObject();
    for (const auto& [name, group] : groups) {
      writer.Key(name.data(), size(name));
      writer.StartArray();
      for (const auto& [key, value] : group) {
        writer.StartObject();
        writer.Key("key");
        writer.String(key.data(), size(key));
        writer.Key("value");
        writer.String(value.data(), size(value));
        writer.EndObject();
      }
      writer.EndArray();
    }
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
  }
};
#endif

template <class Store>
void Apply(benchmark::State& state) {
  const std::string text = SettingsDocument(kEntries);
  for (auto _ : state) {
    Store store;
    store.Apply(text);
  }
}

template <class Store>
void Dump(benchmark::State& state) {
  Store store;
  store.Apply(SettingsDocument(kEntries));
  for (auto _ : state) {
    std::string text = store.Dump();
    benchmark::DoNotOptimize(text);
  }
}

#define TESSEL_BENCH_STORE(store)                         \
  BENCHMARK(Apply<store>)->Unit(benchmark::kMicrosecond); \
  BENCHMARK(Dump<store>)->Unit(benchmark::kMicrosecond)

TESSEL_BENCH_STORE(Tessel);
#ifdef TESSEL_BENCH_NLOHMANN
TESSEL_BENCH_STORE(NlohmannAndMaps);
#endif
#ifdef TESSEL_BENCH_RAPIDJSON
TESSEL_BENCH_STORE(RapidJsonAndMaps);
#endif

}  // namespace
