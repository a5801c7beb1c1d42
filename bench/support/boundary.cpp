#include "boundary.h"

#include <atomic>

namespace {

std::atomic<int> g_flag{0};

}  // namespace

int ReadBoundaryFlag() {
  return g_flag.load(std::memory_order_relaxed);
}
