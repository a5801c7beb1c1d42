// SPDX-License-Identifier: Apache-2.0
#include "TraceOutput.h"

#include <unistd.h>

#include <exception>
#include <string>
#include <string_view>

#include "Printable.h"
#include "util/util_trace.h"

namespace {

// On any thread: one system call, so that lines stay whole.
void WriteLine(void*, int level, const char* module, const char* text, unsigned int length) {
  try {
    const std::string line = "[" + std::string(module) + " " + std::to_string(level) + "] " +
                             Printable(std::string_view(text, length)) + "\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  } catch (const std::exception&) {  // A sink must not throw. Without memory there is no line.
  }
}

}  // namespace

void ShowTraceLines() {
  set_util_trace_sink(&WriteLine, nullptr);
}
