// SPDX-License-Identifier: Apache-2.0
#include "recording/PerfettoTrace.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "JsonObject.h"
#include "recording/EventText.h"

namespace {

// In microseconds, to the nanosecond. A recording may say any time, and JSON has no infinity.
std::string TraceTime(double seconds) {
  constexpr double kNanoseconds = 1e9, kPerMicrosecond = 1e3;
  const double nanoseconds = std::min(seconds * kNanoseconds, std::numeric_limits<double>::max());
  return ShortNumber(std::round(nanoseconds) / kPerMicrosecond);
}

void WriteArguments(JsonObject& arguments, const RecordingEvent& event) {
  arguments.Member("call", *event.call);
  if (event.oldValue) arguments.Member("old", *event.oldValue);
  if (event.newValue) arguments.Member("new", *event.newValue);
  if (event.result) arguments.Member("result", *event.result);
  if (event.told) arguments.Member("told", *event.told);
  if (event.id) arguments.Member("id", *event.id);
  if (event.way) arguments.Member("way", *event.way);
  if (event.waitUs) arguments.Raw("wait_us", ShortNumber(*event.waitUs));
  if (event.thrown) arguments.Member("threw", *event.thrown);
  if (event.origin.label) arguments.Member("origin", *event.origin.label);
}

}  // namespace

PerfettoTrace::PerfettoTrace(const std::string& file) : m_file(file) {
  m_file.Append("{\"traceEvents\":[\n");
}

void PerfettoTrace::Write(const RecordingEvent& event) {
  const bool isDelivery = event.type == "deliver" && !event.isDropped;
  const bool isSet = event.type == "set" && !event.isPicture;
  if (!isDelivery && !isSet) return;
  const std::size_t thread = numberOf(event.thread.value_or(0));
  std::ostringstream text;
  {
    JsonObject object(text);
    object.Member("name", RecordedPath(event))
        .Member("cat", event.type)
        .Member("ph", isSet ? "i" : "X")
        .Raw("ts", TraceTime(event.time));
    if (isSet) {
      object.Member("s", "t");
    } else {
      object.Raw("dur", ShortNumber(event.runUs.value_or(0)));
    }
    object.Member("pid", 1).Member("tid", thread).Member("args", [&](JsonObject& arguments) {
      WriteArguments(arguments, event);
    });
  }
  append(text.str());
}

void PerfettoTrace::Finish() {
  m_file.Append("]}\n");
  m_file.Finish();
}

std::size_t PerfettoTrace::numberOf(std::uint64_t thread) {
  const auto [place, isNew] = m_threads.try_emplace(thread, m_threads.size() + 1);
  if (isNew) {
    std::ostringstream text;
    JsonObject(text)
        .Member("name", "thread_name")
        .Member("ph", "M")
        .Member("pid", 1)
        .Member("tid", place->second)
        .Member("args", [&](JsonObject& name) { name.Member("name", "thread " + std::to_string(thread)); });
    append(text.str());
  }
  return place->second;
}

void PerfettoTrace::append(const std::string& object) {
  m_file.Append(m_separator + object);
  m_separator = ",";
}
