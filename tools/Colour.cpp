#include "Colour.h"

#include <unistd.h>

#include <cstdlib>

namespace {

bool FindOut() {
  // NOLINTBEGIN(concurrency-mt-unsafe): nothing here changes the environment.
  const char* const noColour = std::getenv("NO_COLOR");
  if (noColour != nullptr && *noColour != '\0') return false;
  const char* const terminal = std::getenv("TERM");
  // NOLINTEND(concurrency-mt-unsafe)
  if (terminal != nullptr && std::string_view(terminal) == "dumb") return false;
  return ::isatty(STDOUT_FILENO) == 1;
}

const char* Start(Colour colour) {
  switch (colour) {
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

bool WantsColour() {
  static const bool kWanted = FindOut();
  return kWanted;
}

std::string Coloured(Colour colour, std::string_view text) {
  if (!WantsColour()) return std::string(text);
  return Start(colour) + std::string(text) + "\033[0m";
}
