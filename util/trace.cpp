#include "tessel/trace.h"

#include <array>

#include "FunctionLabel.h"
#include "util/bounded_copy.h"

std::string ExtractClassFunctionName(const char* prettyFunction) {
  if (prettyFunction == nullptr) return "ErrorName";
  return std::string(FunctionLabel(prettyFunction));
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
