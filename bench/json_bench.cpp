// SPDX-License-Identifier: Apache-2.0
// How fast are documents read and written, beside four other libraries, and what memory does a parsed one
// take?
//
//   json_bench [--corpus DIR] [--used-heap] --benchmark_enable_random_interleaving --benchmark_repetitions=9
//
// settings is a generated settings document of 10,000 entries; from DIR come twitter.json, citm_catalog.json
// and canada.json, those that are there. Reading includes giving the document back: a settings import does
// both. bytes is what the parsed document keeps on the heap, for each entry. One thread works.
//
// With --used-heap, libtessel and nlohmann-json first parse each document twenty times in turn, and one of
// each stays alive: free memory then lies in pieces between what is used, as in an engine that has run for
// a while.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/JsonLibraries.h"
#include "support/Run.h"
#include "support/Settings.h"

namespace {

constexpr int kEntries = 10'000;

template <class Library>
void Parse(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    auto document = Library::Parse(text);
    benchmark::DoNotOptimize(document);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

template <class Library>
void Write(benchmark::State& state, const std::string& text) {
  const auto document = Library::Parse(text);
  for (auto _ : state) {
    std::string written = Library::Write(document);
    benchmark::DoNotOptimize(written);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// Numbers as statistics have them, written with six decimals: what the library's own conversion is worth.
std::vector<double> Decimals() {
  std::vector<double> numbers;
  for (int i = 0; i < kEntries; ++i) numbers.push_back((i - kEntries / 2) * 0.734375 + 1.0 / (i + 1));
  return numbers;
}

struct ToChars {
  static void Append(std::string& out, double number) {
    char text[500];
    out.append(text, std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6).ptr);
  }
};

template <class Library>
void WriteDecimals(benchmark::State& state);

template <>
void WriteDecimals<Tessel>(benchmark::State& state) {
  json::Array numbers;
  for (const double number : Decimals()) numbers.push_back(number);
  for (auto _ : state) {
    std::string written = json::SerializeArray(numbers);
    benchmark::DoNotOptimize(written);
  }
}

template <>
void WriteDecimals<ToChars>(benchmark::State& state) {
  const std::vector<double> numbers = Decimals();
  for (auto _ : state) {
    std::string written = "[";
    for (const double number : numbers) {
      ToChars::Append(written, number);
      written += ',';
    }
    written.back() = ']';
    benchmark::DoNotOptimize(written);
  }
}

BENCHMARK(WriteDecimals<Tessel>)->Unit(benchmark::kMicrosecond);
BENCHMARK(WriteDecimals<ToChars>)->Unit(benchmark::kMicrosecond);

std::size_t HeapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

template <class Library>
void Memory(benchmark::State& state, const std::string& text) {
  std::size_t taken = 0;
  for (auto _ : state) {
    const std::size_t before = HeapInUse();
    const auto document = Library::Parse(text);
    taken = HeapInUse() - before;
  }
  state.counters["bytes"] = static_cast<double>(taken) / kEntries;
}

template <class Library>
void RegisterDocument(const std::string& name, const std::string& text) {
  const std::string suffix = std::string("<") + Library::kName + ">/" + name;
  const auto add = [&](const char* what, auto* run) {
    return benchmark::RegisterBenchmark((what + suffix).c_str(), run, text)->Unit(benchmark::kMicrosecond);
  };
  add("Parse", &Parse<Library>);
  add("Write", &Write<Library>);
  if (name == "settings") add("Memory", &Memory<Library>)->Iterations(1);
}

void RegisterDocument(const std::string& name, const std::string& text) {
  RegisterDocument<Tessel>(name, text);
#ifdef TESSEL_BENCH_NLOHMANN
  RegisterDocument<Nlohmann>(name, text);
#endif
#ifdef TESSEL_BENCH_RAPIDJSON
  RegisterDocument<RapidJson>(name, text);
#endif
#ifdef TESSEL_BENCH_BOOST_JSON
  RegisterDocument<BoostJson>(name, text);
#endif
#ifdef TESSEL_BENCH_JSONCPP
  RegisterDocument<JsonCpp>(name, text);
#endif
}

/// Takes an option of `count` words, which must come first, out of the arguments: its last word, or "".
std::string TakeOption(int& argc, char** argv, std::string_view option, int count) {
  if (argc <= count || argv[1] != option) return "";
  const std::string last = argv[count];
  argc -= count;
  for (int i = 1; i < argc; ++i) argv[i] = argv[i + count];
  return last;
}

/// The settings document, and the files that the folder has, by name.
std::map<std::string, std::string> Documents(const std::string& folder) {
  std::map<std::string, std::string> documents{{"settings", SettingsDocument(kEntries)}};
  for (const char* name : {"twitter", "citm_catalog", "canada"}) {
    std::ifstream file(folder + '/' + name + ".json", std::ios::binary);
    if (!folder.empty() && file) documents[name] = {std::istreambuf_iterator<char>(file), {}};
  }
  return documents;
}

template <class Library>
using Document = decltype(Library::Parse(std::string()));

/// What stays alive in a used heap.
struct Residents {
  std::vector<Document<Tessel>> ours;
#ifdef TESSEL_BENCH_NLOHMANN
  std::vector<Document<Nlohmann>> theirs;
#endif
};

Residents UseHeap(const std::map<std::string, std::string>& documents) {
  Residents residents;
  for (const auto& [name, text] : documents) {
    constexpr int kTurns = 20;
    for (int turn = 0; turn < kTurns; ++turn) {
      auto ours = Tessel::Parse(text);
      if (turn == 0) residents.ours.push_back(std::move(ours));
#ifdef TESSEL_BENCH_NLOHMANN
      auto theirs = Nlohmann::Parse(text);
      if (turn == 0) residents.theirs.push_back(std::move(theirs));
#endif
    }
  }
  return residents;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string folder = TakeOption(argc, argv, "--corpus", 2);
  const bool isHeapUsed = !TakeOption(argc, argv, "--used-heap", 1).empty();
  const auto documents = Documents(folder);
  Residents residents;
  if (isHeapUsed) residents = UseHeap(documents);
  for (const auto& [name, text] : documents) RegisterDocument(name, text);
  return RunBenchmarks(argc, argv);
}
