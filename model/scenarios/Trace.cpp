// SPDX-License-Identifier: Apache-2.0
// The trace sink: it is replaced while threads trace, and from inside a sink.
#include <atomic>
#include <memory>
#include <thread>

#include "scenarios/Registry.h"
#include "util/util_trace.h"

using model::Check;

namespace {

void Count(void* lines, int, const char*, const char*, unsigned int) {
  ++*static_cast<std::atomic<int>*>(lines);
}

void Trace() {
  util_adapter_trace(0, "M", "line", 4);
}

void ReplaceItself(void* next, int, const char*, const char*, unsigned int) {
  set_util_trace_sink(&Count, next);
}

}  // namespace

// What the old sink uses ends right after the switch.
MODEL_SCENARIO(SinkIsReplacedBesideALine) {
  auto old = std::make_unique<std::atomic<int>>(0);
  std::atomic<int> lines{0};
  set_util_trace_sink(&Count, old.get());
  std::thread tracer([] { Trace(); });
  set_util_trace_sink(&Count, &lines);
  const int seen = *old;
  old.reset();
  tracer.join();
  Check(seen + lines == 1, "the line goes to one of the two");
}

MODEL_SCENARIO(SinksReplaceThemselves) {
  std::atomic<int> lines{0};
  set_util_trace_sink(&ReplaceItself, &lines);
  std::thread tracer([] { Trace(); });
  Trace();
  tracer.join();
  Trace();
  Check(lines >= 1, "the next sink has the lines");
}

MODEL_SCENARIO(SinkIsReplacedByTwo) {
  std::atomic<int> first{0}, second{0};
  set_util_trace_sink(&Count, &second);
  std::thread tracer([] { Trace(); });
  set_util_trace_sink(&Count, &first);
  std::thread other([&] { set_util_trace_sink(&Count, &second); });
  set_util_trace_sink(&Count, &first);
  other.join();
  tracer.join();
  Trace();
  Check(first + second == 2, "each line goes to one of them");
}
