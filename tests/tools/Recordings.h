// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A recording of the folder `recordings`.
inline std::string Recording(const std::string& name) {
  std::ifstream stream(std::string(TESSEL_RECORDINGS) + "/" + name + ".tessel", std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// How many files this process has open.
inline auto OpenFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// The first line of a recording, with its end.
inline constexpr const char* kRecordingBegin =
    "{\"type\":\"recording\",\"t\":0,\"version\":1,\"wall\":\"2026-11-22T08:42:05Z\"}\n";

/// The beginning of a file of a rotated set: there are ten events in a file.
inline std::string RecordingPart(int part) {
  const std::string time = std::to_string(part - 1), next = std::to_string(part * 10);
  return "{\"type\":\"recording\",\"t\":" + time +
         ",\"version\":1,\"wall\":\"2026-11-22T09:00:00Z\",\"next\":" + next +
         ",\"part\":" + std::to_string(part) + "}\n{\"type\":\"call\",\"t\":" + time +
         ",\"call\":7,\"references\":2,\"picture\":true}\n";
}
/// How it ends when the recording goes on, and when not.
inline std::string RecordingPartEnd(int part) {
  return "{\"type\":\"recording\",\"t\":" + std::to_string(part) +
         ",\"next\":" + std::to_string(part * 10 + 10) +
         ",\"event\":\"ended\",\"reason\":\"goes on in the next file\"}\n";
}
inline const std::string kLastPartEnd = "{\"type\":\"recording\",\"t\":3,\"event\":\"ended\"}\n";
/// What there is instead of the second one when it was removed.
inline const std::string kLostPart = "{\"type\":\"lost\",\"t\":2,\"count\":10}\n";
