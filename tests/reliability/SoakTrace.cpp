// SPDX-License-Identifier: Apache-2.0
#include "SoakTrace.h"

#include <atomic>
#include <charconv>
#include <limits>
#include <string_view>

#include "util/util.h"

using namespace kalStore;

namespace {

constexpr unsigned int kNotSeen = std::numeric_limits<unsigned int>::max();

std::atomic<std::uint64_t> g_lines{0};
// Where the calling thread wants the count of observers of the next line that has one.
thread_local unsigned int* t_totalObservers = nullptr;

template <int number>
void Sink(void*, int, const char*, const char* text, unsigned int length) {
  g_lines.fetch_add(1, std::memory_order_relaxed);
  if (t_totalObservers == nullptr || *t_totalObservers != kNotSeen) return;
  constexpr std::string_view kKey = "m_TotalObservers=";
  const std::string_view line(text, length);
  const std::size_t at = line.find(kKey);
  if (at != std::string_view::npos) {
    std::from_chars(line.data() + at + kKey.size(), line.data() + line.size(), *t_totalObservers);
  }
}

constexpr util_trace_sink kSinks[] = {&Sink<0>, &Sink<1>, &Sink<2>};

}  // namespace

SoakTrace::SoakTrace() {
  Change(0);
}

SoakTrace::~SoakTrace() {
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
}

void SoakTrace::Change(unsigned int choice) {
  set_util_trace_sink(kSinks[choice % std::size(kSinks)], nullptr);
  set_external_trace_mask(static_cast<int>(choice % 4) - 1);
}

std::uint64_t SoakTrace::Lines() {
  return g_lines.load(std::memory_order_relaxed);
}

unsigned int SoakTrace::TotalObservers(IKalConfig& store) {
  const int mask = get_external_trace_mask();
  set_external_trace_mask(2);
  unsigned int count = kNotSeen;
  t_totalObservers = &count;
  store.UnsubscribeConfig(store.SubscribeConfig(
      KAL_CONFIG_GROUP_UNIT_TEST, "count", [](const KalConfigEvent&) {}, nullptr, false));
  t_totalObservers = nullptr;
  set_external_trace_mask(mask);
  return count;
}
