// SPDX-License-Identifier: Apache-2.0
#include "TraceCheck.h"

#include <cstring>
#include <string_view>

#include "Check.h"
#include "util/util_trace.h"

namespace fuzz {
namespace {

constexpr unsigned int kLineBuffer = 1024;

void CheckLine(void*, int level, const char* module, const char* text, unsigned int length) {
  FUZZ_CHECK(level >= 0 && level <= 2);
  FUZZ_EQUAL(std::string_view(module), "UTIL");
  FUZZ_CHECK(length < kLineBuffer);
  FUZZ_EQUAL(std::strlen(text), length);
}

}  // namespace

void CheckTraceLines() {
  [[maybe_unused]] static const bool once = [] {
    set_util_trace_sink(CheckLine, nullptr);
    set_external_trace_mask(2);
    return true;
  }();
}

}  // namespace fuzz
