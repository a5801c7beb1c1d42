// SPDX-License-Identifier: Apache-2.0
#include "tessel/trace.h"

#include <array>
#include <string_view>

#include "util/bounded_copy.h"

std::string ExtractClassFunctionName(const char* prettyFunction) {
  if (prettyFunction == nullptr) return "ErrorName";
  const std::string_view signature = prettyFunction;
  const std::size_t end = signature.find('(');
  if (end == std::string_view::npos) return prettyFunction;
  const std::string_view head = signature.substr(0, end);
  const std::string_view label = head.substr(head.rfind(' ') + 1);  // Without a space: from 0.
  return std::string(label.empty() ? signature : label);
}

const char* GetCurrentModuleName(const char* name) {
  using Buffer = std::array<char, 256>;
  static const Buffer buffer = [] {
    Buffer text{};
    strncpy_s(text.data(), text.size(), "UTIL", text.size() - 1);
    return text;
  }();
  return name != nullptr && *name != '\0' ? name : buffer.data();
}
