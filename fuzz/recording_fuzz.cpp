// SPDX-License-Identifier: Apache-2.0
// Any bytes are read as a recording: each line is an event or has one fault, in the order of the lines,
// however the bytes arrive. An event's line reads back to an event.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Check.h"
#include "recording/RecordingReader.h"

namespace {

using Fault = RecordingReader::Fault;

/// What a reader said, in its order: faults with their line and reason, events with their line's text.
using Report = std::vector<std::tuple<bool, std::size_t, std::string>>;

// The first piece has `first` bytes, the others `size`.
Report ReadInPieces(std::string_view bytes, std::size_t first, std::size_t size) {
  Report report;
  bool isRefused = false;
  RecordingReader reader({[&](const RecordingEvent&, const std::string& line) {
                            FUZZ_CHECK(!isRefused);
                            report.emplace_back(true, 0, line);
                          },
                          [&](Fault fault, std::size_t line, const std::string& reason) {
                            FUZZ_CHECK(!isRefused && !reason.empty());
                            isRefused = fault == Fault::kRefused;
                            report.emplace_back(false, line, reason);
                          }});
  for (std::size_t next = first; !bytes.empty(); next = size) {
    const bool goesOn = reader.Feed(bytes.substr(0, next));
    FUZZ_EQUAL(goesOn, !isRefused);
    bytes.remove_prefix(std::min(next, bytes.size()));
  }
  reader.Finish();
  return report;
}

// Each line once, but for what follows a refusal and an empty end.
void CheckLines(const Report& report, std::string_view bytes) {
  std::size_t number = 0;
  for (const auto& [isEvent, line, text] : report) {
    ++number;
    const std::size_t end = bytes.find('\n');
    if (isEvent) {
      FUZZ_EQUAL(text, bytes.substr(0, end));
      RecordingEvent event;
      FUZZ_EQUAL(ReadRecordingLine(text, event), "");
      FUZZ_CHECK(!event.type.empty() || text.find("\"\"") != std::string::npos);
      FUZZ_CHECK(event.time >= 0);
    } else {
      FUZZ_EQUAL(line, number);
    }
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const Report report = ReadInPieces(bytes, size, size);
  CheckLines(report, bytes);
  FUZZ_CHECK(!report.empty());
  FUZZ_CHECK(report == ReadInPieces(bytes, 1, 1));
  FUZZ_CHECK(report == ReadInPieces(bytes, size / 2, 7));
  return 0;
}
