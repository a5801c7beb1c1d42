// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "util/util.h"

/// Calls a function from each trace line that contains a string, but not from lines that the function causes.
/// One at a time.
class CallingSink {
 public:
  CallingSink(std::string part, std::function<void()> function, int mask = 2)
      : m_part(std::move(part)), m_function(std::move(function)) {
    set_util_trace_sink(&CallingSink::sink, this);
    set_external_trace_mask(mask);
  }
  ~CallingSink() {
    set_external_trace_mask(0);
    set_util_trace_sink(nullptr, nullptr);
  }
  CallingSink(const CallingSink&) = delete;
  CallingSink& operator=(const CallingSink&) = delete;

  int Calls() const { return m_calls; }

 private:
  static void sink(void* context, int, const char*, const char* text, unsigned int length) {
    auto& self = *static_cast<CallingSink*>(context);
    const bool isMeant = std::string_view(text, length).find(self.m_part) != std::string_view::npos;
    if (!isMeant || self.m_isCalling.exchange(true)) return;
    ++self.m_calls;
    self.m_function();
    self.m_isCalling = false;
  }

  const std::string m_part;
  const std::function<void()> m_function;
  std::atomic<bool> m_isCalling{false};
  std::atomic<int> m_calls{0};
};
