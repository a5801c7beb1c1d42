// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fstream>
#include <iterator>
#include <string>

/// A recording of the folder `recordings`.
inline std::string Recording(const std::string& name) {
  std::ifstream stream(std::string(TESSEL_RECORDINGS) + "/" + name + ".tessel", std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The first line of a recording, with its end.
inline constexpr const char* kRecordingBegin =
    "{\"type\":\"recording\",\"t\":0,\"version\":1,\"wall\":\"2026-11-22T08:42:05Z\"}\n";
