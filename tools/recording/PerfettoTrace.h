// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "recording/BufferedFile.h"
#include "recording/RecordingEvent.h"

/// A recording's deliveries and sets on their threads, as a trace in the JSON format that Perfetto opens: a
/// delivery is a slice as long as its callback ran, a set a mark.
class PerfettoTrace {
 public:
  /// Throws CommandError when the file cannot be written; so do the others.
  explicit PerfettoTrace(const std::string& file);

  void Write(const RecordingEvent& event);
  void Finish();

 private:
  std::size_t numberOf(std::uint64_t thread);
  void append(const std::string& object);

  BufferedFile m_file;
  const char* m_separator = "";
  // Their numbers in the order of their first event. The format has 32 bits for the number of a thread, an
  // address may have more.
  std::map<std::uint64_t, std::size_t> m_threads;
};
