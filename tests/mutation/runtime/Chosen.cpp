// SPDX-License-Identifier: Apache-2.0
#include "Chosen.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace {

struct Reached {
  unsigned char* marks;  // One for each number; shared with the processes that this one starts.
  int count;
};

Reached MarksIn(const char* file) noexcept {
  const int descriptor = file == nullptr ? -1 : ::open(file, O_RDWR | O_CLOEXEC);
  if (descriptor < 0) return {};
  struct stat status{};
  const bool isKnown = ::fstat(descriptor, &status) == 0;
  void* const marks = isKnown
                          ? ::mmap(nullptr, status.st_size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0)
                          : MAP_FAILED;
  ::close(descriptor);
  if (marks == MAP_FAILED) return {};
  return {static_cast<unsigned char*>(marks), static_cast<int>(status.st_size)};
}

int NumberIn(const char* text) noexcept {
  return text == nullptr ? 0 : std::atoi(text);
}

// A library of its own, which is loaded before those that have mutants.
const Reached g_reached = MarksIn(std::getenv("TESSEL_MUTANTS_REACHED"));
const int g_chosen = NumberIn(std::getenv("TESSEL_MUTANT"));

}  // namespace

bool mutation::Chosen(int number) noexcept {
  if (number < g_reached.count) g_reached.marks[number] = 1;
  return number == g_chosen;
}
