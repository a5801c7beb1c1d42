// SPDX-License-Identifier: Apache-2.0
#include "Colour.h"

#include <unistd.h>

#include <cstdlib>

namespace {

const char* Start(Colour colour) {
  switch (colour) {
    case Colour::kRed:
      return "\033[31m";
    case Colour::kGreen:
      return "\033[32m";
    case Colour::kYellow:
      return "\033[33m";
    case Colour::kCyan:
      return "\033[36m";
    case Colour::kBold:
      return "\033[1m";
  }
  return "";
}

}  // namespace

bool IsTerminal(int descriptor) {
  return ::isatty(descriptor) == 1;
}

// NOLINTBEGIN(concurrency-mt-unsafe): nothing here changes the environment.
bool IsCapableTerminal(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return (terminal == nullptr || std::string_view(terminal) != "dumb") && IsTerminal(descriptor);
}

bool WantsColour() {
  static const bool kWanted = [] {
    const char* const noColour = std::getenv("NO_COLOR");
    return (noColour == nullptr || *noColour == '\0') && IsCapableTerminal(STDOUT_FILENO);
  }();
  return kWanted;
}
// NOLINTEND(concurrency-mt-unsafe)

std::string Coloured(Colour colour, std::string_view text) {
  if (!WantsColour()) return std::string(text);
  return Start(colour) + std::string(text) + "\033[0m";
}
